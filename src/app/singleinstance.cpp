#include "app/singleinstance.h"

#include "app/mprisservice.h"
#include "store/console.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QDir>
#include <QStandardPaths>
#include <QThread>

namespace {

// What a later launch calls to hand over its files.
class LaunchReceiver : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.plinkbox.Launch")

public:
    explicit LaunchReceiver(std::function<void(const QList<QUrl>&)> open)
        : m_open(std::move(open))
    {
    }

public slots:
    void Open(const QStringList& uris)
    {
        QList<QUrl> urls;
        for (const QString& uri : uris)
            urls.append(QUrl(uri));
        m_open(urls);
    }

private:
    std::function<void(const QList<QUrl>&)> m_open;
};

} // namespace

SingleInstance::SingleInstance() = default;

SingleInstance::~SingleInstance()
{
    if (m_receiver)
        QDBusConnection::sessionBus().unregisterObject(QString::fromLatin1(launchPath));
}

bool SingleInstance::claim(const QList<QUrl>& files)
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    m_lock = std::make_unique<QLockFile>(folder + QStringLiteral("/plinkbox.lock"));
    // A lock left by a process that died is taken over (QLockFile checks its pid).
    if (m_lock->tryLock(200))
        return true;

    QDBusMessage request;
    if (files.isEmpty()) {
        request = QDBusMessage::createMethodCall(QString::fromLatin1(MprisService::serviceName),
                                                 QString::fromLatin1(MprisService::objectPath),
                                                 QStringLiteral("org.mpris.MediaPlayer2"), QStringLiteral("Raise"));
    } else {
        QStringList uris;
        for (const QUrl& file : files)
            uris.append(file.toString(QUrl::FullyEncoded));
        request = QDBusMessage::createMethodCall(QString::fromLatin1(MprisService::serviceName),
                                                 QString::fromLatin1(launchPath), QString::fromLatin1(launchInterface),
                                                 QStringLiteral("Open"));
        request << uris;
    }
    // The running player may still be starting and not yet on the bus: ask
    // again for a few seconds before giving up.
    QDeadlineTimer deadline(3000);
    do {
        const QDBusMessage reply = QDBusConnection::sessionBus().call(request, QDBus::Block, 1000);
        if (reply.type() == QDBusMessage::ReplyMessage) {
            printLine(files.isEmpty() ? QStringLiteral("plinkBox is already running; its window was brought forward.")
                                      : QStringLiteral("plinkBox is already running; the files were handed to it."));
            return false;
        }
        QThread::msleep(200);
    } while (!deadline.hasExpired());
    printLine(QStringLiteral("plinkBox is already running."));
    return false;
}

void SingleInstance::serve(std::function<void(const QList<QUrl>&)> open)
{
    m_receiver = std::make_unique<LaunchReceiver>(std::move(open));
    QDBusConnection::sessionBus().registerObject(QString::fromLatin1(launchPath), m_receiver.get(),
                                                 QDBusConnection::ExportAllSlots);
}

#include "singleinstance.moc"
