#include "app/appdelegate.h"

#include <QApplication>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("plinkBox"));
    AppDelegate delegate;
    return app.exec();
}
