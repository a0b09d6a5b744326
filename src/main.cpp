#include "app/appdelegate.h"
#include "app/singleinstance.h"

#include <QApplication>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("plinkBox"));
    QGuiApplication::setDesktopFileName(QStringLiteral("plinkbox"));
    // Before the store exists: a second player must not touch the files.
    SingleInstance instance;
    if (!instance.claim())
        return 0;
    AppDelegate delegate;
    return app.exec();
}
