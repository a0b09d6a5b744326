#pragma once
// What the benchmarks that start programs of their own share: CPU time,
// the first paint, and running this program again in another mode.

#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QHash>
#include <QProcess>
#include <QTextStream>
#include <QTimer>
#include <QWidget>

#include <algorithm>

#include <sys/resource.h>

// CPU seconds of the whole process, or of the calling thread only.
inline double cpuSeconds(int who = RUSAGE_SELF)
{
    rusage usage{};
    getrusage(who, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
        + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// Says "painted" and the process's CPU milliseconds so far, on the first
// paint of any window; then calls whenPainted, if any.
class FirstPaint : public QObject
{
public:
    std::function<void()> whenPainted;

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (!m_seen && event->type() == QEvent::Paint && watched->isWidgetType()) {
            m_seen = true;
            QTextStream(stdout) << "painted " << cpuSeconds() * 1000 << Qt::endl;
            if (whenPainted)
                QMetaObject::invokeMethod(this, whenPainted, Qt::QueuedConnection);
        }
        return false;
    }

private:
    bool m_seen = false;
};

// A run of this program in another mode: the wall time from its start to
// its "painted" line, and every "name value" line it printed.
struct Child {
    double startupMs = -1;
    QHash<QString, double> figures;
};

inline Child runChild(const QStringList& arguments, const QString& home,
                      const QProcessEnvironment& extra = QProcessEnvironment(),
                      const QString& program = QCoreApplication::applicationFilePath())
{
    Child result;
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), home);
    for (const QString& key : extra.keys())
        environment.insert(key, extra.value(key));
    child.setProcessEnvironment(environment);
    QElapsedTimer clock;
    clock.start();
    child.start(program, arguments);
    while (child.state() != QProcess::NotRunning || child.bytesAvailable()) {
        child.waitForReadyRead(100);
        while (child.canReadLine()) {
            const QString line = QString::fromLocal8Bit(child.readLine()).trimmed();
            if (line.startsWith(QLatin1String("painted")) && result.startupMs < 0)
                result.startupMs = double(clock.nsecsElapsed()) / 1e6;
            if (line.count(QLatin1Char(' ')) == 1)
                result.figures.insert(line.section(QLatin1Char(' '), 0, 0), line.section(QLatin1Char(' '), 1).toDouble());
        }
        if (child.state() == QProcess::NotRunning && !child.canReadLine())
            break;
    }
    return result;
}

// The floor: an empty Qt Widgets window the size of the player's, shown;
// report runs once it has been up for 300 ms.
inline int emptyWindow(int argc, char* argv[], const std::function<void()>& report)
{
    QApplication app(argc, argv);
    FirstPaint painted;
    app.installEventFilter(&painted);
    QWidget window;
    window.resize(269, 96);
    window.show();
    QTimer::singleShot(300, &app, report);
    QTimer::singleShot(400, &app, &QCoreApplication::quit);
    return app.exec();
}

inline double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? -1 : values.at(values.size() / 2);
}
