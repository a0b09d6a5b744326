#pragma once

// Picks Qt Multimedia's backend for this process. Call it first thing in
// main(), before the application object or any multimedia object exists: Qt
// reads the choice once. A backend the user chose with QT_MEDIA_BACKEND is
// kept.
void chooseMediaBackend();
