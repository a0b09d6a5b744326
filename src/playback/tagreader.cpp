#include "playback/tagreader.h"

#include "playback/id3tagfile.h"
#include "store/console.h"
#include "store/trackfiles.h"

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

void collectTracksAsync(const QList<QUrl>& handed, QObject* context,
                        std::function<void(const CollectedTracks&)> done,
                        std::function<void(int read, int total)> progress)
{
    // The watcher lives on the caller's thread as the context's child, so
    // the answer comes back there, and not at all once the context is gone.
    PLINK_CHECK(context && context->thread() == QThread::currentThread(),
                "collectTracksAsync called off its context's thread");
    using Result = std::pair<CollectedTracks, QStringList>;
    auto* watcher = new QFutureWatcher<Result>(context);
    QObject::connect(watcher, &QFutureWatcher<Result>::finished, context, [watcher, done = std::move(done)] {
        if (watcher->future().resultCount() > 0) {
            const Result result = watcher->result();
            for (const QString& line : result.second)
                printLine(line);
            done(result.first);
        }
        watcher->deleteLater();
    });
    if (progress) {
        QObject::connect(watcher, &QFutureWatcher<Result>::progressValueChanged, context,
                         [watcher, progress = std::move(progress)](int value) { progress(value, watcher->progressMaximum()); });
    }
    QFuture<Result> future = QtConcurrent::run([handed](QPromise<Result>& promise) {
        const FoundTracks found = findTracks(handed, [&promise] { return promise.isCanceled(); });
        Result result{{found.files, {}}, found.lines};
        const int total = int(found.files.size());
        promise.setProgressRange(0, total);
        result.first.tags.reserve(total);
        for (int i = 0; i < total && !promise.isCanceled(); ++i) {
            const QUrl& url = found.files.at(i);
            result.first.tags.append(readTrackTags(url.toLocalFile()));
            promise.setProgressValue(i + 1);
        }
        if (!promise.isCanceled())
            promise.addResult(std::move(result));
    });
    // A watcher destroyed with its context cancels the walk it no longer waits for.
    QObject::connect(watcher, &QObject::destroyed, [future]() mutable { future.cancel(); });
    watcher->setFuture(future);
}
