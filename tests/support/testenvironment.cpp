#include "support/testenvironment.h"

#include <QDir>
#include <QStandardPaths>

#include <cstdlib>

namespace {
QString g_home; // set once per test binary, before anything else runs
}

TestEnvironment::TestEnvironment()
{
    const QByteArray base = qgetenv("TMPDIR").isEmpty() ? QByteArray("/tmp") : qgetenv("TMPDIR");
    QByteArray pattern = base + "/plinkbox-test-XXXXXX";
    const char* made = mkdtemp(pattern.data());
    if (!made)
        qFatal("cannot create a temporary HOME");
    m_root = QString::fromLocal8Bit(made);
    g_home = m_root + QStringLiteral("/home");
    QDir().mkpath(g_home + QStringLiteral("/Documents"));
    qputenv("HOME", g_home.toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", (g_home + QStringLiteral("/.config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", (g_home + QStringLiteral("/.local/share")).toLocal8Bit());
    qputenv("XDG_CACHE_HOME", (g_home + QStringLiteral("/.cache")).toLocal8Bit());
    if (qEnvironmentVariableIsEmpty("PLINK_TEST_DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
}

TestEnvironment::~TestEnvironment()
{
    if (qEnvironmentVariableIsEmpty("PLINK_KEEP_TEST_HOME"))
        QDir(m_root).removeRecursively();
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
    QDir home(g_home);
    // Tests may have made files read-only or replaced folders; start afresh.
    home.removeRecursively();
    QDir().mkpath(documents());
}
