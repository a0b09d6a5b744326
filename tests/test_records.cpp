#include "store/records.h"
#include "support/testenvironment.h"

#include <QGuiApplication>

class RecordsTest : public QObject
{
    Q_OBJECT

private slots:
    void settingsAreWrittenInFieldOrderWithEscapedSlashes();
};

void RecordsTest::settingsAreWrittenInFieldOrderWithEscapedSlashes()
{
    SettingsData data{QStringLiteral("mini-blueberry"), {QStringLiteral("a/b")}, true, false, true, false, true, 0, {}};
    QCOMPARE(toJson(data), QByteArray("{\n  \"currentTheme\" : \"mini-blueberry\",\n  \"availableThemes\" : [\n    \"a\\/b\"\n  ],\n  \"playsSounds\" : true,\n  \"superSized\" : false,\n  \"isFloating\" : true,\n  \"shuffleTracks\" : false,\n  \"loopTracks\" : true,\n  \"lastSelectedPlaylistID\" : 0,\n  \"playlists\" : []\n}"));
}

PLINK_TEST_MAIN_WITH(QGuiApplication, RecordsTest)
#include "test_records.moc"
