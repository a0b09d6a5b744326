#include "app/appdelegate.h"
#include "playback/mediabackend.h"

#include <QApplication>

int main(int argc, char* argv[])
{
    chooseMediaBackend(); // before any Qt object: the choice is read once
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("plinkBox"));
    AppDelegate delegate;
    return app.exec();
}
