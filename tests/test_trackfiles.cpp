// Folders and playlist files made into audio files, and playlists written as M3U8.
#include "store/fileio.h"
#include "store/trackfiles.h"
#include "support/stdoutcapture.h"
#include "support/testfiles.h"

#include <QCoreApplication>

using Names = QStringList;

// Made in Documents ("~" in the rows) for every test: "a->b" is a link to b, the rest are files.
const Names tree{"m/10 - y.mp3", "m/2 - x.MP3", "m/Banana.flac", "m/apple.ogg", "m/b/1.opus", "m/A/1.mp3", "m/.h/x.mp3", "m/.h.mp3",
                 "m/n.txt", "m/l.m3u", "l/a.mp3", "l/b.mp3->a.mp3", "l/s/c.mp3", "l/s/up->..", "l/s/gone.mp3->x", "x.txt", ".h.mp3",
                 "u/a.mp3", "u/k/b.mp3", "u/z/c.mp3", "music/a b.mp3", "music/Ünï.mp3", "music/sub/c.ogg", "music2/d.flac",
                 "music/notes.txt", "music/i.pls", "music/mem.m3u->/proc/self/mem"}; // opens, but reading it fails

class TrackFilesTest : public QObject
{
    Q_OBJECT

    const QString m_root = TestEnvironment::documents();

    // The files found in Documents, then the lines printed, with Documents written "~".
    Names found(const FoundTracks& tracks) const
    {
        return QUrl::toStringList(tracks.files, QUrl::PreferLocalFile).replaceInStrings(m_root + '/', "")
            + Names(tracks.lines).replaceInStrings(m_root, "~");
    }

private slots:
    void init()
    {
        TestEnvironment::wipeHome();
        for (const QString& entry : tree) {
            const QString path = m_root + '/' + entry.section("->", 0, 0);
            entry.contains("->") ? QFile::link(entry.section("->", 1), path) : TestFiles::writeFile(path, {});
        }
        QFile::setPermissions(m_root + "/u/k", {});
    }
    void cleanup() { QFile::setPermissions(m_root + "/u/k", QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner); }

    // Folders give their files as file managers list them.
    void foldersAndPlaylistFilesBecomeAudioFiles_data()
    {
        QTest::addColumn<Names>("handed");
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<Names>("expected");
        QTest::newRow("order") << Names{"~/m"} << QByteArray()
                               << Names{"m/A/1.mp3", "m/b/1.opus", "m/2 - x.MP3", "m/10 - y.mp3", "m/apple.ogg", "m/Banana.flac"};
        QTest::newRow("links") << Names{"~/l", "~/l/s"} << QByteArray() << Names{"l/s/c.mp3", "l/a.mp3", "l/b.mp3"};
        QTest::newRow("handed") << Names{"~/x.txt", "~/m/l.m3u", "~/.h.mp3", "~/no.mp3", "http://a.b/c.mp3"} << QByteArray()
                                << Names{"x.txt", ".h.mp3", "Cannot open ~/no.mp3: File does not exist",
                                         "Cannot open http://a.b/c.mp3: only files on this computer can be played"};
        QTest::newRow("unreadable") << Names{"~/u"} << QByteArray() << Names{"u/z/c.mp3", "u/a.mp3", "Cannot open ~/u/k: Permission denied"};
        // A playlist file of this text: its entries, resolved.
        const QString skip = "Skipped %1 in ~/music/p.m3u8: %2";
        QTest::newRow("m3u8") << Names{"~/music/p.m3u8"}
                              << QByteArray("\xEF\xBB\xBF#EXTM3U\r\n#EXTINF:1,x\r\na b.mp3\r\n\n\xC3\x9Cn\xC3\xAF.mp3\n~/music2/d.flac\n"
                                            "file://~/music/a%20b.mp3\nhttp://r/x\nx.mp3\nsub\ni.pls\nnotes.txt\n")
                              << Names{"music/a b.mp3", "music/Ünï.mp3", "music2/d.flac", "music/a b.mp3", "music/sub/c.ogg", "music/notes.txt",
                                       skip.arg("http://r/x", "only files on this computer can be played"),
                                       skip.arg("x.mp3", "File does not exist"), skip.arg("i.pls", "playlists inside playlists are not opened")};
        QTest::newRow("latin-1") << Names{"~/music/p.M3U"} << QByteArray("\xDCn\xEF.mp3\n") << Names{"music/Ünï.mp3"};
        QTest::newRow("pls") << Names{"~/music/p.pls"} << QByteArray("[Playlist]\nNumberOfEntries=3\nfile10=sub/c.ogg\nFile2=../music2/d.flac\n"
                                                                     "Title2=x\nFile1=a b.mp3\n[other]\nFile3=a b.mp3\n")
                             << Names{"music/a b.mp3", "music2/d.flac", "music/sub/c.ogg"};
        QTest::newRow("read fails") << Names{"~/music/mem.m3u"} << QByteArray() << Names{"Cannot open ~/music/mem.m3u: Input/output error"};
    }
    void foldersAndPlaylistFilesBecomeAudioFiles()
    {
        QFETCH(Names, handed);
        QFETCH(QByteArray, text);
        if (handed == Names{"~/u"} && QFileInfo(m_root + "/u/k").isReadable())
            QSKIP("permissions do not stop this user (root)");
        if (!text.isEmpty()) // the first thing handed is a playlist with this text
            TestFiles::writeFile(m_root + handed.first().mid(1), text.replace("~", m_root.toUtf8()));
        const QList<QUrl> urls = QUrl::fromStringList(handed.replaceInStrings("~", "file://" + m_root));
        QTEST(found(findTracks(urls)), "expected");
        QVERIFY(findTracks(urls, [] { return true; }).files.isEmpty());
    }

    void playlistsAreExportedAndReadBack_data()
    {
        QTest::addColumn<int>("failingStep");
        QTest::addColumn<QString>("expected");
        QTest::newRow("written") << 0 << "#EXTM3U\n#EXTINF:-1,A - S  1\nsub/c.ogg\n#EXTINF:-1,T\n~/music2/d.flac\n#EXTINF:-1,A - R\nhttp://r/x\n";
        QTest::newRow("failed") << 1 << "old\nFailed to export playlist: Could not write \"~/music/e.m3u8\": No space left on device";
    }
    void playlistsAreExportedAndReadBack()
    {
        QFETCH(int, failingStep);
        QFETCH(QString, expected);
        const QString path = m_root + "/music/e.m3u8";
        TestFiles::writeFile(path, "old\n");
        const QList<Track> tracks{Track::make("file://" + m_root + "/music/sub/c.ogg", "S\r\n1", "A"),
                                  Track::make("file://" + m_root + "/music2/d.flac", "T", ""), Track::make("http://r/x", "R", "A")};
        StdoutCapture out;
        failNthWrite(failingStep);
        const bool exported = exportPlaylist(tracks, path);
        QCOMPARE(TestFiles::readFile(path) + (exported ? "" : out.text().trimmed()), expected.replace("~", m_root));
        if (exported)
            QCOMPARE(found(readPlaylistFile(path)).mid(0, 2), (Names{"music/sub/c.ogg", "music2/d.flac"}));
    }
};

PLINK_TEST_MAIN_WITH(QCoreApplication, TrackFilesTest)
#include "test_trackfiles.moc"
