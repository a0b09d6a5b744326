#include "app/translations.h"
#include "support/testenvironment.h"

#include <QApplication>
#include <QTranslator>

class TranslationsTest : public QObject
{
    Q_OBJECT

private slots:
    // No languages: what main() installed for the German environment. The last label, the playlists' folder,
    // keeps its name in every language.
    void interfaceSpeaksTheFirstTranslatedLanguage_data()
    {
        QTest::addColumn<QStringList>("languages");
        QTest::addColumn<QStringList>("shown");
        const QStringList english{"General", "Add tracks...", "Cancel", "Playlists"};
        QTest::newRow("German environment") << QStringList()
                                            << QStringList{"Allgemein", "Titel hinzufügen …", "Abbrechen", "Playlists"};
        QTest::newRow("untranslated, then French") << QStringList{"sw-KE", "fr"}
                                                   << QStringList{"Général", "Ajouter des pistes…", "Annuler", "Playlists"};
        QTest::newRow("untranslated") << QStringList{"sw"} << english;
        QTest::newRow("English before German") << QStringList{"en-GB", "de-DE"} << english;
    }
    void interfaceSpeaksTheFirstTranslatedLanguage()
    {
        QFETCH(QStringList, languages);
        if (!languages.isEmpty()) {
            qDeleteAll(qApp->findChildren<QTranslator*>(Qt::FindDirectChildrenOnly)); // a translator deleted is removed
            installTranslations(*qApp, languages);
        }
        const QStringList labels{QCoreApplication::translate("SettingsView", "General"),
                                 QCoreApplication::translate("PlaylistSettingsView", "Add tracks..."),
                                 QCoreApplication::translate("QPlatformTheme", "Cancel"),
                                 QCoreApplication::translate("Config", "Playlists")};
        QTEST(labels, "shown");
    }
};

int main(int argc, char* argv[])
{
    TestEnvironment environment;
    // German as a desktop session sets it, whether or not the machine has the locale generated.
    qputenv("LANG", "de_DE.UTF-8");
    for (const char* overriding : {"LANGUAGE", "LC_ALL", "LC_MESSAGES"})
        qunsetenv(overriding);
    QApplication app(argc, argv);
    installTranslations(app);
    TranslationsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_translations.moc"
