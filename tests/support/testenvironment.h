#pragma once

#include <QString>
#include <QTemporaryDir>
#include <QTest>

// A private HOME with an empty Documents for one test binary, made before the application object, so that no test
// touches the user's files; the offscreen platform unless the test was registered as needing the display.
class TestEnvironment
{
public:
    TestEnvironment();

    static QString home() { return s_home; }
    static QString documents() { return s_home + QStringLiteral("/Documents"); }
    // Empties Documents (and the rest of HOME) between test cases.
    static void wipeHome();

private:
    inline static QString s_home; // set once per test binary, before anything else runs
    QTemporaryDir m_root;
};

#define PLINK_TEST_MAIN_WITH(AppType, TestClass)                                            \
    int main(int argc, char* argv[])                                                        \
    {                                                                                       \
        TestEnvironment environment;                                                        \
        AppType app(argc, argv);                                                            \
        TestClass test;                                                                     \
        QTEST_SET_MAIN_SOURCE_PATH                                                          \
        return QTest::qExec(&test, argc, argv);                                             \
    }
