#include "app/singleinstance.h"

#include "app/mprisservice.h"
#include "store/console.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusError>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QDir>
#include <QStandardPaths>
#include <QThread>

namespace {

// What a later launch calls to hand over its files. The reply waits until
// they are in the playlist, so that commands sent after it find them there.
class LaunchReceiver : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.plinkbox.Launch")

public:
    explicit LaunchReceiver(std::function<void(const QList<QUrl>&, std::function<void()>)> open)
        : m_open(std::move(open))
    {
    }

public slots:
    void Open(const QStringList& uris)
    {
        QList<QUrl> urls;
        for (const QString& uri : uris)
            urls.append(QUrl(uri));
        setDelayedReply(true);
        m_open(urls, [bus = connection(), reply = message().createReply()] { bus.send(reply); });
    }

private:
    std::function<void(const QList<QUrl>&, std::function<void()>)> m_open;
};

QDBusMessage playerCall(const QString& interface, const QString& method)
{
    return QDBusMessage::createMethodCall(QString::fromLatin1(MprisService::serviceName),
                                          QString::fromLatin1(MprisService::objectPath), interface, method);
}

// The running player may still be starting, its name or objects not yet on
// the bus: ask again for a few seconds. Any other failure is final, as a
// request that timed out may still have been carried out.
bool callRunning(const QDBusMessage& request, int timeout)
{
    const QDeadlineTimer deadline(3000);
    for (;;) {
        const QDBusMessage reply = QDBusConnection::sessionBus().call(request, QDBus::Block, timeout);
        if (reply.type() == QDBusMessage::ReplyMessage)
            return true;
        const QDBusError::ErrorType error = QDBusError(reply).type();
        const bool starting = error == QDBusError::ServiceUnknown || error == QDBusError::UnknownObject
            || error == QDBusError::UnknownInterface || error == QDBusError::UnknownMethod;
        if (!starting || deadline.hasExpired())
            return false;
        QThread::msleep(200);
    }
}

} // namespace

SingleInstance::SingleInstance() = default;

SingleInstance::~SingleInstance()
{
    if (m_receiver)
        QDBusConnection::sessionBus().unregisterObject(QString::fromLatin1(launchPath));
}

bool SingleInstance::claim()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    m_lock = std::make_unique<QLockFile>(folder + QStringLiteral("/plinkbox.lock"));
    // A lock left by a process that died is taken over (QLockFile checks its pid).
    return m_lock->tryLock(200);
}

int SingleInstance::handOver(const QList<QUrl>& files, const QStringList& commands)
{
    const QString notAnswering = QStringLiteral("plinkBox is already running, but did not answer.");
    if (files.isEmpty() && commands.isEmpty()) {
        if (!callRunning(playerCall(QStringLiteral("org.mpris.MediaPlayer2"), QStringLiteral("Raise")), 1000)) {
            printLine(notAnswering);
            return 1;
        }
        printLine(QStringLiteral("plinkBox is already running; its window was brought forward."));
        return 0;
    }
    if (!files.isEmpty()) {
        QStringList uris;
        for (const QUrl& file : files)
            uris.append(file.toString(QUrl::FullyEncoded));
        QDBusMessage request = QDBusMessage::createMethodCall(QString::fromLatin1(MprisService::serviceName),
                                                              QString::fromLatin1(launchPath),
                                                              QString::fromLatin1(launchInterface), QStringLiteral("Open"));
        request << uris;
        // Reading the files' tags takes a while for many files.
        if (!callRunning(request, 60000)) {
            printLine(notAnswering);
            return 1;
        }
        printLine(QStringLiteral("plinkBox is already running; the files were handed to it."));
    }
    for (const QString& command : commands) {
        if (!callRunning(playerCall(QStringLiteral("org.mpris.MediaPlayer2.Player"), command), 5000)) {
            printLine(notAnswering);
            return 1;
        }
    }
    return 0;
}

void SingleInstance::serve(std::function<void(const QList<QUrl>&, std::function<void()>)> open)
{
    m_receiver = std::make_unique<LaunchReceiver>(std::move(open));
    QDBusConnection::sessionBus().registerObject(QString::fromLatin1(launchPath), m_receiver.get(),
                                                 QDBusConnection::ExportAllSlots);
}

#include "singleinstance.moc"
