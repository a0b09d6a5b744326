#include "app/singleinstance.h"

#include "app/mprisservice.h"
#include "store/console.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDeadlineTimer>
#include <QDir>
#include <QStandardPaths>
#include <QThread>

SingleInstance::SingleInstance() = default;

SingleInstance::~SingleInstance() = default;

bool SingleInstance::claim()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    if (folder.isEmpty())
        folder = QDir::tempPath();
    m_lock = std::make_unique<QLockFile>(folder + QStringLiteral("/plinkbox.lock"));
    // A lock left by a process that died is taken over (QLockFile checks its pid).
    if (m_lock->tryLock(200))
        return true;

    const QDBusMessage raise = QDBusMessage::createMethodCall(QString::fromLatin1(MprisService::serviceName),
                                                              QString::fromLatin1(MprisService::objectPath),
                                                              QStringLiteral("org.mpris.MediaPlayer2"),
                                                              QStringLiteral("Raise"));
    // The running player may still be starting and not yet on the bus: ask
    // again for a few seconds before giving up.
    QDeadlineTimer deadline(3000);
    do {
        const QDBusMessage reply = QDBusConnection::sessionBus().call(raise, QDBus::Block, 1000);
        if (reply.type() == QDBusMessage::ReplyMessage) {
            printLine(QStringLiteral("plinkBox is already running; its window was brought forward."));
            return false;
        }
        QThread::msleep(200);
    } while (!deadline.hasExpired());
    printLine(QStringLiteral("plinkBox is already running."));
    return false;
}
