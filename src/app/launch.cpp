#include "app/launch.h"

#include "app/appdelegate.h"
#include "app/commandline.h"
#include "app/mprisservice.h"
#include "app/signalquit.h"
#include "app/singleinstance.h"
#include "app/trackopener.h"
#include "app/translations.h"
#include "store/console.h"

#include <QApplication>
#include <QTimer>

int runPlayer(int argc, char* argv[])
{
    // Read before any application object, so that help and mistakes need no display.
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    const CommandLine line = CommandLine::parse(arguments);
    if (line.action() != CommandLine::Action::run) {
        for (const QString& text : line.message().split(u'\n'))
            printLine(text);
        return line.exitStatus();
    }
    QList<QUrl> files;
    for (const QString& argument : line.files())
        files.append(TrackOpener::fromArgument(argument));

    // Before the store exists: a second player must not touch the files. It
    // only talks to the first over the bus, which needs no display either.
    SingleInstance instance;
    if (!instance.claim()) {
        QCoreApplication app(argc, argv);
        return instance.handOver(files, line.commands());
    }
    if (!line.startsPlayer()) {
        printLine(QStringLiteral("plinkBox is not running."));
        return 1;
    }

    AppDelegate::choosePlatform();
    QApplication app(argc, argv);
    installTranslations(app);
    quitOnTerminationSignals();
    QApplication::setApplicationName(QStringLiteral("plinkBox"));
    QGuiApplication::setDesktopFileName(QStringLiteral("plinkbox"));
    AppDelegate delegate;
    instance.serve([&delegate](const QList<QUrl>& handed, std::function<void()> done) {
        delegate.openFiles(handed, std::move(done));
        delegate.raisePlayer();
    });
    // The commands apply once the files are in, or once the window is set up.
    const auto runCommands = [&delegate, commands = line.commands()] {
        for (const QString& command : commands)
            delegate.mpris().perform(command);
    };
    if (!files.isEmpty())
        delegate.openFiles(files, runCommands);
    else
        QTimer::singleShot(0, &delegate, runCommands);
    return app.exec();
}
