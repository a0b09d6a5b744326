#pragma once

// SIGTERM (a session ending, a system shutting down) and SIGINT (Ctrl+C in
// a terminal) quit as the menu's Quit does, so that the sound stream, the
// bus name and every file close in order. A second such signal ends the
// process at once. Call once, after the application object exists.
void quitOnTerminationSignals();
