#include "app/appdelegate.h"
#include "app/signalquit.h"
#include "app/singleinstance.h"
#include "app/trackopener.h"

#include <QApplication>

int main(int argc, char* argv[])
{
    AppDelegate::choosePlatform();
    QApplication app(argc, argv);
    quitOnTerminationSignals();
    QApplication::setApplicationName(QStringLiteral("plinkBox"));
    QGuiApplication::setDesktopFileName(QStringLiteral("plinkbox"));
    QList<QUrl> files;
    for (const QString& argument : app.arguments().mid(1))
        files.append(TrackOpener::fromArgument(argument));
    // Before the store exists: a second player must not touch the files.
    SingleInstance instance;
    if (!instance.claim(files))
        return 0;
    AppDelegate delegate;
    instance.serve([&delegate](const QList<QUrl>& handed) {
        delegate.openFiles(handed);
        delegate.raisePlayer();
    });
    if (!files.isEmpty())
        delegate.openFiles(files);
    return app.exec();
}
