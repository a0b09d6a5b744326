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

// Reads every file off the user-interface thread and calls done on context's
// thread with one result per URL, in the order given. Nothing is called if
// context is destroyed first.
void readTrackTagsAsync(const QList<QUrl>& urls, QObject* context,
                        std::function<void(const QList<TrackTags>&)> done);
