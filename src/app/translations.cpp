#include "app/translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

void installTranslations(QCoreApplication& app)
{
    installTranslations(app, QLocale::system().uiLanguages());
}

void installTranslations(QCoreApplication& app, const QStringList& uiLanguages)
{
    for (const QString& name : uiLanguages) {
        const QLocale language(name);
        // English is the texts as written: preferred before another language, it wins.
        if (language.language() == QLocale::English)
            return;
        auto* ours = new QTranslator(&app);
        if (!ours->load(language, QStringLiteral("plinkbox"), QStringLiteral("_"), QStringLiteral(":/i18n"))) {
            delete ours;
            continue;
        }
        QCoreApplication::installTranslator(ours);
        auto* qts = new QTranslator(&app);
        if (qts->load(language, QStringLiteral("qtbase"), QStringLiteral("_"),
                      QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
            QCoreApplication::installTranslator(qts);
        else
            delete qts;
        return;
    }
}
