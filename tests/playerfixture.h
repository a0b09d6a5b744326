#pragma once

// What the player's tests share: tones on disk, playlists of them, and a
// theme whose pictures are solid colours, so that a test can tell by one
// pixel which picture was drawn where.

#include "store/config.h"
#include "support/audiofixtures.h"

#include <QColor>
#include <QDir>
#include <QImage>
#include <QUrl>

namespace PlayerFixture {

// count tones of the given length in folder, named tone0.wav, tone1.wav, …
inline QStringList makeTones(const QString& folder, int count, double seconds)
{
    QStringList paths;
    for (int i = 0; i < count; ++i) {
        const QString path = folder + QStringLiteral("/tone%1.wav").arg(i);
        AudioFixtures::Tone tone(seconds);
        tone.frequency = 330 + 110 * i;
        if (!QFile::exists(path) && !AudioFixtures::makeTone(path, tone))
            return {};
        paths.append(path);
    }
    return paths;
}

inline Track trackOf(const QString& path, int number)
{
    return Track::make(QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded),
                       QStringLiteral("Tone %1").arg(number), QStringLiteral("Sine"));
}

// Appends a playlist holding the given files and returns its id.
inline QUuid addPlaylist(Config& config, const QString& name, const QStringList& paths)
{
    config.createPlaylist();
    QList<Playlist> catalogue = config.playlists();
    catalogue.last().name = name;
    config.setPlaylists(catalogue);
    QList<Track> tracks;
    for (int i = 0; i < paths.size(); ++i)
        tracks.append(trackOf(paths.at(i), i + 1));
    config.writePlaylistTracks(catalogue.last().id, tracks);
    return catalogue.last().id;
}

// A colour per picture name, for every picture the skin draws.
inline QColor pictureColour(const QString& picture)
{
    const QStringList names = {"player", "player-min", "close", "min", "rr", "rr-on", "play", "play-on",
                               "pause", "pause-on", "ff", "ff-on", "playlist-menu", "track-menu",
                               "track-scrubber", "track-album"};
    const int index = names.indexOf(picture);
    // Far apart hues at full saturation, never close to black or white.
    return QColor::fromHsv((index * 360 / names.size() + index % 2 * 11) % 360, 255, 230);
}

// Writes the coloured pictures into the current theme's folder, at two
// pixels per point of the default layout (exact sizes do not matter: the
// skin stretches them).
inline void writeColouredTheme(Config& config)
{
    const QString folder = config.themesFolder() + QLatin1Char('/') + config.currentTheme();
    QDir().mkpath(folder);
    const QStringList names = {"player", "player-min", "close", "min", "rr", "rr-on", "play", "play-on",
                               "pause", "pause-on", "ff", "ff-on", "playlist-menu", "track-menu",
                               "track-scrubber", "track-album"};
    for (const QString& name : names) {
        QImage picture(64, 64, QImage::Format_ARGB32);
        picture.fill(pictureColour(name));
        picture.save(folder + QLatin1Char('/') + name + QStringLiteral(".png"));
    }
}

} // namespace PlayerFixture

// The tests play through the same media backend as the program.
#include "playback/mediabackend.h"
inline const bool mediaBackendChosen = (chooseMediaBackend(), true);

#include "support/stdoutcapture.h"

#include <QRegularExpression>

namespace PlayerFixture {
// The lines an action printed. The capture ends before the caller checks
// anything, so that a failing check's own report is not swallowed.
template <class Action>
QStringList printedBy(Action action)
{
    StdoutCapture capture;
    action();
    QStringList lines = capture.lines();
    // The test framework's own messages (Qt's warnings, the media
    // backend's debug lines) go to standard output too.
    static const QRegularExpression framework(QStringLiteral("^Q(WARN|DEBUG|INFO|SYSTEM|CRITICAL) "));
    lines.removeIf([](const QString& line) { return framework.match(line).hasMatch(); });
    return lines;
}
} // namespace PlayerFixture
