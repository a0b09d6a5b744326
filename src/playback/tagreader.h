#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QUrl>

#include <functional>

// Title and artist of an audio file, from its ID3v2 tag only. Anything else
// (MP4 atoms, Vorbis comments, no tag, an unreadable file) gives the defaults.
struct TrackTags {
    QString title = QStringLiteral("Track");
    QString artist = QStringLiteral("Unknown artist");

    bool operator==(const TrackTags&) const = default;
};

// Reads one file, on the calling thread.
TrackTags readTrackTags(const QString& path);

// The audio files found in what the user handed over (files, folders,
// playlist files), each with its tags.
struct CollectedTracks {
    QList<QUrl> files;
    QList<TrackTags> tags; // one per file
};

// Finds the files and reads their tags off the user-interface thread, then
// prints a line for each thing skipped and calls done on context's thread.
// progress, if given, hears on that thread how many files are read out of how
// many (0 of 0 while the folders are still walked). Once context is destroyed
// the work stops early and nothing is called.
void collectTracksAsync(const QList<QUrl>& handed, QObject* context,
                        std::function<void(const CollectedTracks&)> done,
                        std::function<void(int read, int total)> progress = {});
