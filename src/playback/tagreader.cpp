#include "playback/tagreader.h"

#include "playback/id3tagfile.h"
#include "store/console.h"

#include <QFutureWatcher>
#include <QThread>
#include <QtConcurrent>

#include <taglib/id3v2frame.h>
#include <taglib/id3v2tag.h>
#include <taglib/textidentificationframe.h>

namespace {

// The text of the tag's first frame with this id, its values joined by
// " / " (ID3v2.4 keeps several artists in one frame, apart by a NUL, and
// TagLib would join them with a bare space); empty when there is none.
QString firstFrameText(const TagLib::ID3v2::Tag& tag, const char* id)
{
    const TagLib::ID3v2::FrameList& frames = tag.frameListMap()[id];
    if (frames.isEmpty())
        return {};
    const auto* text = dynamic_cast<const TagLib::ID3v2::TextIdentificationFrame*>(frames.front());
    QStringList values;
    for (const TagLib::String& value : text ? text->fieldList() : TagLib::StringList(frames.front()->toString())) {
        const QString part = QString::fromStdWString(value.toWString());
        if (!part.trimmed().isEmpty())
            values.append(part);
    }
    return values.join(QStringLiteral(" / "));
}

} // namespace

TrackTags readTrackTags(const QString& path)
{
    TrackTags tags;
    const Id3TagFile file(path);
    if (!file.tag())
        return tags;
    // An empty (or blank) frame reads as missing: a track without a name is
    // no better than the default.
    const QString title = firstFrameText(*file.tag(), "TIT2");
    const QString artist = firstFrameText(*file.tag(), "TPE1");
    if (!title.trimmed().isEmpty())
        tags.title = title;
    if (!artist.trimmed().isEmpty())
        tags.artist = artist;
    return tags;
}

void readTrackTagsAsync(const QList<QUrl>& urls, QObject* context,
                        std::function<void(const QList<TrackTags>&)> done)
{
    // The watcher lives on the caller's thread as the context's child, so
    // the answer comes back there, and not at all once the context is gone.
    PLINK_CHECK(context && context->thread() == QThread::currentThread(),
                "readTrackTagsAsync called off its context's thread");
    QStringList paths;
    for (const QUrl& url : urls)
        paths.append(url.isLocalFile() ? url.toLocalFile() : url.path());
    auto* watcher = new QFutureWatcher<QList<TrackTags>>(context);
    QObject::connect(watcher, &QFutureWatcher<QList<TrackTags>>::finished, context,
                     [watcher, done = std::move(done)] {
                         done(watcher->result());
                         watcher->deleteLater();
                     });
    watcher->setFuture(QtConcurrent::run([paths] {
        QList<TrackTags> result;
        result.reserve(paths.size());
        for (const QString& path : paths)
            result.append(readTrackTags(path));
        return result;
    }));
}
