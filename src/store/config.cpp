#include "store/config.h"

#include "store/console.h"
#include "store/fileio.h"

#include <QStandardPaths>

#include <algorithm>
#include <cstdlib>

namespace {

[[noreturn]] void cannotLocateDocuments(const QString& error)
{
    printLine(QStringLiteral("Unable to locate document directory: ") + error);
    std::exit(EXIT_FAILURE);
}

QString locateDocumentDirectory()
{
    const QString path = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (path.isEmpty())
        cannotLocateDocuments(QStringLiteral("no Documents folder is known for this user."));
    if (const QString error = makeFolder(path); !error.isEmpty())
        cannotLocateDocuments(error);
    return path;
}

// Names compare as sequences of Unicode scalar values after canonical
// composition: case-sensitive and independent of the locale.
QList<uint> sortKey(const QString& name)
{
    return name.normalized(QString::NormalizationForm_C).toUcs4();
}

} // namespace

QStringList Config::defaultThemeCatalogue()
{
    return {QStringLiteral("nano-tangerine"), QStringLiteral("neo-lime"),
            QStringLiteral("mini-blueberry"), QStringLiteral("max-graphite")};
}

const char* Config::propertyName(Property property)
{
#define PLINK_NAME_ROW(Type, name, Setter, value) #name,
#define PLINK_NAME_POINT(name, Setter, px, py) #name,
    static const char* const names[] = {PLINK_SETTINGS_PROPERTIES(PLINK_NAME_ROW)
                                            PLINK_GEOMETRY_PROPERTIES(PLINK_NAME_ROW, PLINK_NAME_POINT)};
#undef PLINK_NAME_ROW
#undef PLINK_NAME_POINT
    static_assert(std::size(names) == propertyCount);
    const int index = int(property);
    PLINK_CHECK(index >= 0 && index < propertyCount, "property out of range");
    return names[index];
}

Config::Config(QObject* parent)
    : QObject(parent)
{
    // The properties already hold their defaults (member initialisers).
    m_documentDirectory = locateDocumentDirectory();
    createSoundPlayer();
    startUp();
    watchPlaylistFiles();
}

Config::~Config() = default;

void Config::startUp()
{
    const QString path = settingsFileURL();
    if (existsAt(path)) {
        const FileBytes file = readWholeFile(path);
        Decoded<SettingsData> settings;
        if (file.bytes)
            settings = settingsDataFromJson(*file.bytes);
        else
            settings.error = file.error;
        if (settings && !settings.value->currentTheme.isEmpty()) {
            loadSettings();
            loadTheme();
            return;
        }
        if (!settings)
            printLine(settings.error);
        // The defaults are about to overwrite this file: keep what was there
        // so that a person can recover their playlists.
        keepBrokenCopy(path);
    }
    firstStart();
}

void Config::firstStart()
{
    writeDefaultSettings();
    installThemes();
    ensurePlaylistsFolder();
}

QString Config::applicationFolder() const
{
    return m_documentDirectory + QStringLiteral("/plinkBox-1");
}

QString Config::settingsFileURL()
{
    const QString folder = applicationFolder();
    if (!existsAt(folder)) {
        if (const QString error = makeFolder(folder); !error.isEmpty())
            printLine(error);
    }
    return folder + QStringLiteral("/plinkBox-settings.json");
}

void Config::loadSettings()
{
    const QString path = settingsFileURL();
    if (!existsAt(path)) {
        printLine(QStringLiteral("Settings file not found."));
        return;
    }
    const FileBytes file = readWholeFile(path);
    if (!file.bytes) {
        printLine(file.error);
        return;
    }
    const Decoded<SettingsData> decoded = settingsDataFromJson(*file.bytes);
    if (!decoded) {
        printLine(decoded.error);
        return;
    }
    const SettingsData& settings = *decoded.value;
    setCurrentTheme(settings.currentTheme);
    setAvailableThemes(settings.availableThemes);
    setPlaysSounds(settings.playsSounds);
    setSuperSized(settings.superSized);
    setIsFloating(settings.isFloating);
    setShuffleTracks(settings.shuffleTracks);
    setLoopTracks(settings.loopTracks);
    setPlaylists(settings.playlists);
    if (settings.lastSelectedPlaylistID) {
        setLastSelectedPlaylistID(*settings.lastSelectedPlaylistID);
        setCurrentPlaylistIndex(*settings.lastSelectedPlaylistID);
    }
}

SettingsData Config::settingsForSaving() const
{
    SettingsData data{currentTheme(), availableThemes(), playsSounds(), superSized(), isFloating(),
                      shuffleTracks(), loopTracks(), lastSelectedPlaylistID(), playlists()};
    // Only the written copy is sorted; memory keeps the order of creation.
    QList<std::pair<QList<uint>, Playlist>> keyed;
    keyed.reserve(data.playlists.size());
    for (const Playlist& playlist : std::as_const(data.playlists))
        keyed.append({sortKey(playlist.name), playlist});
    std::stable_sort(keyed.begin(), keyed.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (qsizetype i = 0; i < keyed.size(); ++i)
        data.playlists[i] = keyed.at(i).second;
    return data;
}

void Config::writeSettings(const SettingsData& data)
{
    const QString error = writeFileAtomic(settingsFileURL(), toJson(data));
    if (!error.isEmpty())
        printLine(QStringLiteral("Failed to save JSON data: ") + error);
}

void Config::saveSettings()
{
    writeSettings(settingsForSaving());
}

void Config::writeDefaultSettings()
{
    writeSettings({QStringLiteral("mini-blueberry"), defaultThemeCatalogue(), true, false, true,
                   false, true, 0, {}});
}
