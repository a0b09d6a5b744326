#include "support/testenvironment.h"

#include <QDir>

TestEnvironment::TestEnvironment()
    : m_root(QDir::tempPath() + QStringLiteral("/plinkbox-test-XXXXXX"))
{
    if (!m_root.isValid())
        qFatal("cannot create a temporary HOME");
    m_root.setAutoRemove(qEnvironmentVariableIsEmpty("PLINK_KEEP_TEST_HOME"));
    s_home = m_root.path() + QStringLiteral("/home");
    wipeHome();
    // Documents is found through the XDG folders, so they must not point at the real ones.
    qputenv("HOME", s_home.toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (s_home + QStringLiteral("/.config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", (s_home + QStringLiteral("/.local/share")).toLocal8Bit());
    qputenv("XDG_CACHE_HOME", (s_home + QStringLiteral("/.cache")).toLocal8Bit());
    if (qEnvironmentVariableIsEmpty("PLINK_TEST_DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
}

void TestEnvironment::wipeHome()
{
    // Tests may have made files read-only or replaced folders; start afresh.
    QDir(s_home).removeRecursively();
    QDir().mkpath(documents());
}
