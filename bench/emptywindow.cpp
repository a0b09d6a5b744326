// The floor for start-up: an empty Qt Widgets window the player's size, in a
// program that links nothing but Qt Widgets; with --text it shows one line of
// text, as the skin shows its title. It prints "painted" and its CPU
// milliseconds on the first paint, then quits.
#include "childrun.h"

#include <QLabel>

int main(int argc, char* argv[])
{
    if (argc > 1 && QByteArray(argv[1]) == "--text") {
        QApplication app(argc, argv);
        FirstPaint painted;
        app.installEventFilter(&painted);
        QLabel window(QStringLiteral("Song number 0"));
        window.resize(269, 96);
        window.show();
        QTimer::singleShot(400, &app, &QCoreApplication::quit);
        return app.exec();
    }
    return emptyWindow(argc, argv, [] {});
}
