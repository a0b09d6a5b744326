#pragma once

#include <QStringList>

class QCoreApplication;

// Puts the interface into the first of the user's languages that plinkBox
// speaks, with Qt's own texts (standard buttons, file dialogs) in the same
// language where they are installed; English, the texts as written, otherwise.
// Call once, right after the application object is made: texts are looked up
// when the windows are built.
void installTranslations(QCoreApplication& app);
// The same for languages in order of preference ("de-DE", "fr", ...).
void installTranslations(QCoreApplication& app, const QStringList& uiLanguages);
