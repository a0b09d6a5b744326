#include "player/contentview.h"
#include "player/skincontrols.h"
#include "player/timetext.h"
#include "playerfixture.h"
#include "support/testenvironment.h"

#include <QAccessible>
#include <QApplication>
#include <QTemporaryDir>

class SkinInputTest : public QObject
{
    Q_OBJECT

    QTemporaryDir m_toneFolder;
    std::unique_ptr<PlayerFixture::Rig> m_rig; // "Three" (here two tones of 80 s) is current
    std::unique_ptr<ContentView> m_view;

    QPoint onBar(double fraction) const
    {
        const ScrubBounds bar = scrubBounds(m_rig->config.geometry(), 1);
        return QPointF(bar.minX + fraction * bar.range(), bar.y).toPoint();
    }
    // "skin+40", "bar-120": a wheel turned over the skin or the scrub bar; "pixels+40": a
    // touchpad that tells pixels only. Anything else is a key.
    void input(const QString& what)
    {
        const qsizetype sign = what.indexOf(QRegularExpression(QStringLiteral("[+-]\\d")));
        const QKeyCombination key = QKeySequence(what)[0];
        if (sign < 0)
            return QTest::keyClick(m_view.get(), key.key(), key.keyboardModifiers());
        const QPoint units(0, what.mid(sign).toInt()), none, at = what.startsWith("bar") ? onBar(0.5) : QPoint(20, 20);
        const bool pixels = what.startsWith("pixels");
        QWheelEvent wheel(at, m_view->mapToGlobal(at), pixels ? units : none, pixels ? none : units, {}, {},
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(m_view.get(), &wheel);
    }

private slots:
    void init()
    {
        m_view.reset();
        m_rig.reset();
        TestEnvironment::wipeHome();
        m_rig = std::make_unique<PlayerFixture::Rig>(PlayerFixture::makeTones(m_toneFolder.path(), 2, 80));
        m_view = std::make_unique<ContentView>(m_rig->config, m_rig->player, m_rig->transport);
        m_view->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_view.get()));
    }

    void timeTextShowsReachedSecondsAndHours()
    {
        const struct { double position, length; const char* text; } table[] = {
            {0, 296, "0:00 / 4:56"}, {59.9, 296.9, "0:59 / 4:56"}, {61, 296, "1:01 / 4:56"},
            {3600, 7200, "1:00:00 / 2:00:00"}, {83, 7200, "0:01:23 / 2:00:00"},
            {83, 0, "1:23 / --:--"}, {3723, -1, "1:02:03 / --:--"}}; // a length of 0 or less is unknown
        for (const auto& row : table)
            QCOMPARE(timeText(row.position, row.length), QLatin1String(row.text));
    }

    // From 30 s into an 80-s track at half volume, or with none open; a row of keys alone is named by them.
    void keysAndWheelSeekAndStepTheVolume_data()
    {
        QTest::addColumn<QStringList>("inputs");
        QTest::addColumn<double>("volume");
        QTest::addColumn<double>("position");
        const struct { const char* name; const char* inputs; double volume, position; } rows[] = {
            {"notch up over the skin", "skin+120", 0.6, 30}, {"notch down over the skin", "skin-120", 0.4, 30},
            {"notch up over the scrub bar", "bar+120", 0.5, 35}, {"three touchpad thirds", "skin+40 skin+40 skin+40", 0.6, 30},
            {"touchpad pixels", "pixels-60 pixels-60", 0.4, 30}, {"remainders carry over", "skin+100 skin+100 skin+100", 0.7, 30},
            {"a turn back starts afresh", "skin+100 skin-20 skin+100", 0.5, 30}, {"", "Left", 0.5, 25},
            {"", "Shift+Right", 0.5, 60}, {"", "Up", 0.6, 30}, {"", "Down", 0.4, 30}, {"", "Home", 0.5, 0},
            {"past the end, which ends it", "Shift+Right Shift+Right", 0.5, 80},
            {"no open track", "none skin+120 bar+120 Up Right", 1.0, 0}};
        for (const auto& row : rows)
            QTest::newRow(*row.name ? row.name : row.inputs) << QString(row.inputs).split(' ') << row.volume << row.position;
    }
    void keysAndWheelSeekAndStepTheVolume()
    {
        QFETCH(QStringList, inputs);
        QFETCH(double, position);
        AudioPlayer& player = m_rig->player;
        if (inputs.first() != "none") {
            QVERIFY(m_rig->transport.playCurrentTrack());
            player.seek(30.0 / 80);
            player.setVolume(0.5f);
        }
        for (const QString& what : inputs.mid(inputs.first() == "none"))
            input(what);
        QTEST(qRound(player.volume() * 10) / 10.0, "volume");
        QVERIFY2(qAbs(player.progress() * player.duration() - position) < 0.5, qPrintable(m_view->positionText()));
        if (position == 80) // as a drag of the scrub bar past the end does
            QTRY_COMPARE(m_rig->config.currentTrackIndex(), 1);
    }

    // Screen readers read the state, the title and the artist (Qt's setters announce
    // each change); the tray and a tip riding on the dragged knob tell the time.
    void trackStateAndTimeAreTold()
    {
        QAccessibleInterface* skin = QAccessible::queryAccessibleInterface(m_view.get());
        const auto told = [&] {
            QStringList texts{skin->text(QAccessible::Description), m_view->nowPlayingText()};
            for (int i = 0; i < skin->childCount(); ++i)
                if (skin->child(i)->role() == QAccessible::StaticText && !skin->child(i)->state().invisible)
                    texts.append(skin->child(i)->text(QAccessible::Name));
            return texts;
        };
        QCOMPARE(told(), (QStringList{"Stopped", "plinkBox", "Tone 1", "Sine"}));
        auto tracks = *m_rig->config.readPlaylistTracks(m_rig->three);
        tracks[1].artist = QStringLiteral("Square");
        m_rig->config.writePlaylistTracks(m_rig->three, tracks);
        m_rig->transport.playPausePressed();
        const auto tip = m_view->findChild<SkinTimeTip*>();
        QTest::mouseMove(m_view.get(), onBar(0));
        QTest::mousePress(m_view.get(), Qt::LeftButton, {}, onBar(0)); // on the knob
        QTest::mouseMove(m_view.get(), onBar(0.5));
        QVERIFY(tip->isVisible() && tip->x() + tip->width() / 2 == m_view->mapToGlobal(onBar(0.5)).x());
        QCOMPARE(told().first() + tip->text(), "Playing0:40 / 1:20");
        QTest::mouseRelease(m_view.get(), Qt::LeftButton, {}, QPoint(20, 20));
        QVERIFY(!tip->isVisible());
        m_rig->transport.skip(Transport::Direction::next);
        m_rig->player.pause();
        QCOMPARE(told(), (QStringList{"Paused", "Tone 2 — Square\n0:00 / 1:20", "Tone 2", "Square"}));
        m_rig->player.stop();
        QCOMPARE(told().first(), "Stopped");
    }
};

PLINK_TEST_MAIN_WITH(QApplication, SkinInputTest)
#include "test_skininput.moc"
