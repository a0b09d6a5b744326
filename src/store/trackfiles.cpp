#include "store/trackfiles.h"

#include "store/console.h"
#include "store/fileio.h"

#include <QCollator>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QMimeData>
#include <QSet>
#include <QStringDecoder>

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

namespace {

const char* const notLocal = "only files on this computer can be played";
const char* const missing = "File does not exist";

// What libsndfile and our FFmpeg decoder play. ALAC has no extension of its
// own: it comes in .m4a and .caf.
constexpr QLatin1String audioExtensions[]{
    QLatin1String("mp3"),  QLatin1String("mp2"), QLatin1String("m4a"),  QLatin1String("m4b"),  QLatin1String("mp4"),
    QLatin1String("aac"),  QLatin1String("flac"), QLatin1String("ogg"), QLatin1String("oga"),  QLatin1String("opus"),
    QLatin1String("wav"),  QLatin1String("wave"), QLatin1String("aif"), QLatin1String("aiff"), QLatin1String("aifc"),
    QLatin1String("wma"),  QLatin1String("ape"), QLatin1String("wv"),   QLatin1String("mka"),  QLatin1String("mpc"),
    QLatin1String("ac3"),  QLatin1String("caf"), QLatin1String("spx"),  QLatin1String("tta"),  QLatin1String("au"),
    QLatin1String("snd"),  QLatin1String("w64")};
constexpr QLatin1String playlistExtensions[]{QLatin1String("m3u"), QLatin1String("m3u8"), QLatin1String("pls")};

QStringView suffixOf(const QString& path)
{
    const qsizetype dot = path.lastIndexOf(QLatin1Char('.'));
    if (dot < 0 || dot < path.lastIndexOf(QLatin1Char('/')))
        return {};
    return QStringView(path).mid(dot + 1);
}

template <std::size_t N>
bool hasSuffixIn(const QString& path, const QLatin1String (&extensions)[N])
{
    const QStringView suffix = suffixOf(path);
    return std::any_of(std::begin(extensions), std::end(extensions),
                       [&](QLatin1String extension) { return suffix.compare(extension, Qt::CaseInsensitive) == 0; });
}

// "http://...", "mms://...": a scheme of two letters or more before "://".
bool looksLikeUrl(const QString& text)
{
    const qsizetype colon = text.indexOf(QLatin1String("://"));
    if (colon < 2 || !text.at(0).isLetter())
        return false;
    return std::all_of(text.begin(), text.begin() + colon, [](QChar c) {
        return c.isLetterOrNumber() || c == QLatin1Char('+') || c == QLatin1Char('-') || c == QLatin1Char('.');
    });
}

// Playlists come from many programs: UTF-8 when they are valid UTF-8 (the
// decoder drops a leading byte-order mark), else the Latin-1 that older
// programs wrote into .m3u files.
QString playlistText(QByteArrayView bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8);
    QString text = utf8(bytes);
    return utf8.hasError() ? QString::fromLatin1(bytes) : text;
}

QStringList m3uEntries(const QString& text)
{
    QStringList entries;
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        const QString entry = line.trimmed();
        if (!entry.isEmpty() && !entry.startsWith(QLatin1Char('#')))
            entries.append(entry);
    }
    return entries;
}

// The FileN entries of the [playlist] section (or of a file without sections), by N.
QStringList plsEntries(const QString& text)
{
    QList<std::pair<qint64, QString>> numbered;
    bool inPlaylist = true;
    for (const QString& rawLine : text.split(QLatin1Char('\n'))) {
        const QString line = rawLine.trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            inPlaylist = line.compare(QLatin1String("[playlist]"), Qt::CaseInsensitive) == 0;
            continue;
        }
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        const QString key = line.left(equals).trimmed();
        if (!inPlaylist || equals < 0 || !key.startsWith(QLatin1String("file"), Qt::CaseInsensitive))
            continue;
        bool isNumber = false;
        const qint64 n = key.mid(4).toLongLong(&isNumber);
        const QString value = line.mid(equals + 1).trimmed();
        if (isNumber && !value.isEmpty())
            numbered.append({n, value});
    }
    std::stable_sort(numbered.begin(), numbered.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    QStringList entries;
    for (const auto& [n, entry] : numbered)
        entries.append(entry);
    return entries;
}

QString absoluteClean(const QString& path)
{
    return QDir::cleanPath(QFileInfo(path).absoluteFilePath());
}

// The visible subfolders and audio files of a folder; the reason when it
// cannot be read. The folder is closed again before its subfolders are
// opened, so that a deep tree does not run out of file handles.
QString listFolder(const QString& path, QStringList& folders, QStringList& files)
{
    std::error_code error;
    std::filesystem::directory_iterator entries(QFile::encodeName(path).toStdString(), error);
    for (; !error && entries != std::filesystem::directory_iterator(); entries.increment(error)) {
        const QString name = QFile::decodeName(entries->path().filename().c_str());
        if (name.startsWith(QLatin1Char('.')))
            continue;
        const QFileInfo info(path + QLatin1Char('/') + name); // follows symbolic links
        if (info.isDir())
            folders.append(name);
        else if (info.isFile() && isAudioFileName(name))
            files.append(name);
    }
    return error ? QString::fromStdString(error.message()) : QString();
}

// Gathers the audio files of what it is handed, in order, with a line for
// each thing skipped. Remembers the folders it walked, so that symbolic
// links that lead back up end.
class TrackFinder
{
public:
    explicit TrackFinder(const std::function<bool()>& cancelled)
        : m_cancelled(cancelled)
        , m_collator(naturalOrderLocale())
    {
        m_collator.setNumericMode(true);
    }

    void addHanded(const QUrl& url);
    void readPlaylist(const QString& path);
    FoundTracks take() { return std::move(m_found); }

private:
    // Qt's collator ignores numeric mode in the C locale that a bare session
    // (or a test) runs in; English orders names as a file manager there does.
    static QLocale naturalOrderLocale()
    {
        const QLocale system;
        return system.language() == QLocale::C ? QLocale(QLocale::English, QLocale::UnitedStates) : system;
    }

    bool stopped()
    {
        m_stopped = m_stopped || (m_cancelled && m_cancelled());
        return m_stopped;
    }
    void print(const QString& line) { m_found.lines.append(line); }
    void addEntry(const QString& entry, const QString& playlist);
    void walkFolder(const QString& path);
    void sortNaturally(QStringList& names) const;

    const std::function<bool()>& m_cancelled;
    QCollator m_collator;
    QSet<QString> m_walked; // canonical paths
    FoundTracks m_found;
    bool m_stopped = false;
};

void TrackFinder::addHanded(const QUrl& url)
{
    if (stopped())
        return;
    if (!url.isLocalFile()) {
        print(QStringLiteral("Cannot open %1: %2").arg(url.toDisplayString(), QLatin1String(notLocal)));
        return;
    }
    const QString path = absoluteClean(url.toLocalFile());
    const QFileInfo info(path);
    const auto cannot = [&](const char* why) {
        print(QStringLiteral("Cannot open %1: %2").arg(url.toLocalFile(), QLatin1String(why)));
    };
    // Any file the user picked is taken, whatever its name says.
    if (info.isDir())
        walkFolder(path);
    else if (!info.exists())
        cannot(missing);
    else if (!info.isFile())
        cannot("It is neither a file nor a folder");
    else if (isPlaylistFileName(path))
        readPlaylist(path);
    else
        m_found.files.append(QUrl::fromLocalFile(path));
}

void TrackFinder::readPlaylist(const QString& path)
{
    QFile file(path);
    const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    if (file.error() != QFileDevice::NoError) {
        print(QStringLiteral("Cannot open %1: %2").arg(path, file.errorString()));
        return;
    }
    const QString text = playlistText(bytes);
    const bool isPls = suffixOf(path).compare(QLatin1String("pls"), Qt::CaseInsensitive) == 0;
    for (const QString& entry : isPls ? plsEntries(text) : m3uEntries(text)) {
        if (stopped())
            return;
        addEntry(entry, path);
    }
}

void TrackFinder::addEntry(const QString& entry, const QString& playlist)
{
    const auto skip = [&](const char* why) {
        print(QStringLiteral("Skipped %1 in %2: %3").arg(entry, playlist, QLatin1String(why)));
    };
    QString path = entry;
    if (entry.startsWith(QLatin1String("file:"), Qt::CaseInsensitive)) {
        const QUrl url(entry);
        if (!url.isLocalFile())
            return skip(notLocal);
        path = url.toLocalFile();
    } else if (looksLikeUrl(entry)) {
        return skip(notLocal);
    }
    path = QDir::cleanPath(QDir(QFileInfo(playlist).absolutePath()).absoluteFilePath(path));
    const QFileInfo info(path);
    // Entries are taken as the playlist's author chose them, like handed files.
    if (info.isDir())
        walkFolder(path);
    else if (!info.exists())
        skip(missing);
    else if (!info.isFile())
        skip("It is neither a file nor a folder");
    else if (isPlaylistFileName(path))
        skip("playlists inside playlists are not opened");
    else
        m_found.files.append(QUrl::fromLocalFile(path));
}

// Subfolders first, then audio files, each in natural order, as file managers
// list them. Hidden entries and other files are left out without a word.
void TrackFinder::walkFolder(const QString& path)
{
    if (stopped())
        return;
    const QString canonical = QFileInfo(path).canonicalFilePath();
    if (m_walked.contains(canonical))
        return;
    m_walked.insert(canonical);
    QStringList folders, files;
    const QString error = listFolder(path, folders, files);
    if (!error.isEmpty()) {
        print(QStringLiteral("Cannot open %1: %2").arg(path, error));
        return;
    }
    sortNaturally(folders);
    sortNaturally(files);
    const QString prefix = path == QLatin1String("/") ? path : path + QLatin1Char('/');
    for (const QString& folder : std::as_const(folders))
        walkFolder(prefix + folder);
    for (const QString& file : std::as_const(files))
        m_found.files.append(QUrl::fromLocalFile(prefix + file));
}

void TrackFinder::sortNaturally(QStringList& names) const
{
    // Names the collator finds equal keep a fixed order all the same.
    std::sort(names.begin(), names.end(), [this](const QString& a, const QString& b) {
        const int order = m_collator.compare(a, b);
        return order != 0 ? order < 0 : a < b;
    });
}

// Where a track is written in a playlist at folder: relative below it, else
// absolute; a file URL where a plain path would read back as something else.
QString location(const Track& track, const QString& folder)
{
    const QUrl url(track.urlString);
    if (!url.isLocalFile())
        return track.urlString;
    const QString path = QDir::cleanPath(url.toLocalFile());
    const QString below = folder == QLatin1String("/") ? folder : folder + QLatin1Char('/');
    const QString written = path.startsWith(below) ? path.mid(below.size()) : path;
    const bool misread = written.startsWith(QLatin1Char('#')) || written.startsWith(QLatin1String("file:"), Qt::CaseInsensitive)
        || looksLikeUrl(written) || written != written.trimmed() || written.contains(QLatin1Char('\n'))
        || written.contains(QLatin1Char('\r'));
    return misread ? QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded) : written;
}

QString oneLine(QString text)
{
    return text.replace(QLatin1Char('\r'), QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char(' '));
}

} // namespace

FoundTracks findTracks(const QList<QUrl>& handed, const std::function<bool()>& cancelled)
{
    TrackFinder finder(cancelled);
    for (const QUrl& url : handed)
        finder.addHanded(url);
    return finder.take();
}

bool isAudioFileName(const QString& path)
{
    return hasSuffixIn(path, audioExtensions);
}

bool isPlaylistFileName(const QString& path)
{
    return hasSuffixIn(path, playlistExtensions);
}

FoundTracks readPlaylistFile(const QString& path)
{
    const std::function<bool()> never;
    TrackFinder finder(never);
    finder.readPlaylist(absoluteClean(path));
    return finder.take();
}

QByteArray toM3u8(const QList<Track>& tracks, const QString& playlistPath)
{
    const QString folder = QFileInfo(absoluteClean(playlistPath)).path();
    QByteArray text("#EXTM3U\n");
    for (const Track& track : tracks) {
        const QString title = track.artist.isEmpty() ? track.trackName : track.artist + QLatin1String(" - ") + track.trackName;
        text += "#EXTINF:-1," + oneLine(title).toUtf8() + '\n';
        text += location(track, folder).toUtf8() + '\n';
    }
    return text;
}

bool exportPlaylist(const QList<Track>& tracks, const QString& playlistPath)
{
    const QString error = writeFileAtomic(playlistPath, toM3u8(tracks, playlistPath));
    if (!error.isEmpty())
        printLine(QStringLiteral("Failed to export playlist: %1").arg(error));
    return error.isEmpty();
}

QList<QUrl> droppedLocalUrls(const QMimeData* mime)
{
    QList<QUrl> urls;
    for (const QUrl& url : mime && mime->hasUrls() ? mime->urls() : QList<QUrl>()) {
        if (url.isLocalFile())
            urls.append(url);
    }
    return urls;
}
