#include "support/testenvironment.h"

#include <QDir>

namespace {
QString g_home; // set once per test binary, before anything else runs
}

TestEnvironment::TestEnvironment()
    : m_root(QDir::tempPath() + QStringLiteral("/plinkbox-test-XXXXXX"))
{
    if (!m_root.isValid())
        qFatal("cannot create a temporary HOME");
    m_root.setAutoRemove(qEnvironmentVariableIsEmpty("PLINK_KEEP_TEST_HOME"));
    g_home = m_root.path() + QStringLiteral("/home");
    wipeHome();
    // Documents is found through the XDG folders, so they must not point at the real ones.
    qputenv("HOME", g_home.toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (g_home + QStringLiteral("/.config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", (g_home + QStringLiteral("/.local/share")).toLocal8Bit());
    qputenv("XDG_CACHE_HOME", (g_home + QStringLiteral("/.cache")).toLocal8Bit());
    if (qEnvironmentVariableIsEmpty("PLINK_TEST_DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
}

QString TestEnvironment::home()
{
    return g_home;
}

QString TestEnvironment::documents()
{
    return g_home + QStringLiteral("/Documents");
}

void TestEnvironment::wipeHome()
{
    // Tests may have made files read-only or replaced folders; start afresh.
    QDir(g_home).removeRecursively();
    QDir().mkpath(documents());
}
