#include "app/singleinstance.h"

#include "app/mprisservice.h"
#include "store/console.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDir>
#include <QStandardPaths>

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

    QDBusMessage raise = QDBusMessage::createMethodCall(QString::fromLatin1(MprisService::serviceName),
                                                        QString::fromLatin1(MprisService::objectPath),
                                                        QStringLiteral("org.mpris.MediaPlayer2"),
                                                        QStringLiteral("Raise"));
    QDBusConnection::sessionBus().call(raise, QDBus::Block, 2000);
    printLine(QStringLiteral("plinkBox is already running; its window was brought forward."));
    return false;
}
