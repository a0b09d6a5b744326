// Config's theme operations: the layout file, installation and pictures.
#include "store/config.h"

#include "store/console.h"
#include "store/fileio.h"
#include "themes/defaultlayouts.h"
#include "themes/themedata.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFileSystemWatcher>

namespace {

constexpr qreal picturePixelRatio = 2; // pictures are drawn at two pixels per point

QImage loadPicture(const QString& path)
{
    QImage image(path);
    if (!image.isNull())
        image.setDevicePixelRatio(picturePixelRatio);
    return image;
}

QString installSourcePath(const QString& theme, const QString& picture)
{
    return QStringLiteral(":/themes/%1-%2@2x.png").arg(theme, picture);
}

QString fallbackPath(const QString& picture)
{
    return QStringLiteral(":/fallback/mini-blueberry-%1@2x.png").arg(picture);
}

} // namespace

QString Config::themesFolder() const
{
    //: A folder's name on disk: keep it as it is, or another language would not find the themes.
    return m_documentDirectory + QStringLiteral("/plinkBox/")
        + QCoreApplication::translate("Config", "Themes");
}

QString Config::themeFileURL() const
{
    return themesFolder() + QLatin1Char('/') + currentTheme() + QStringLiteral("/theme.json");
}

ThemeData Config::geometry() const
{
    ThemeData theme;
#define PLINK_GET_FIELD(Type, name, Setter, value) theme.name = m_##name;
#define PLINK_GET_POINT(name, Setter, px, py) \
    theme.name##X = m_##name.x();           \
    theme.name##Y = m_##name.y();
    PLINK_GEOMETRY_PROPERTIES(PLINK_GET_FIELD, PLINK_GET_POINT)
#undef PLINK_GET_FIELD
#undef PLINK_GET_POINT
    return theme;
}

void Config::applyGeometry(const ThemeData& theme)
{
    // In field order; each setter notifies only when its value differs.
#define PLINK_SET_FIELD(Type, name, Setter, value) Setter(theme.name);
#define PLINK_SET_POINT(name, Setter, px, py) Setter(QPointF(theme.name##X, theme.name##Y));
    PLINK_GEOMETRY_PROPERTIES(PLINK_SET_FIELD, PLINK_SET_POINT)
#undef PLINK_SET_FIELD
#undef PLINK_SET_POINT
}

void Config::loadTheme()
{
    const QString path = themeFileURL();
    if (!existsAt(path))
        return;
    const FileBytes file = readWholeFile(path);
    if (!file.bytes) {
        printLine(QStringLiteral("Failed to read theme.json: ") + file.error);
        return;
    }
    const Decoded<ThemeData> theme = themeDataFromJson(*file.bytes);
    if (!theme) {
        printLine(QStringLiteral("Failed to read theme.json: ") + theme.error);
        return;
    }
    applyGeometry(*theme.value);
}

void Config::writeDefaultTheme(const QString& themeName)
{
    // An unknown theme starts with the layout that is on screen.
    const auto family = familyOfTheme(themeName);
    const ThemeData theme = family ? familyLayout(*family) : geometry();
    const QString path = themesFolder() + QLatin1Char('/') + themeName + QStringLiteral("/theme.json");
    const QString error = writeFileAtomic(path, toJson(theme));
    if (!error.isEmpty())
        printLine(QStringLiteral("Failed to write theme.json: ") + error);
}

void Config::installThemes()
{
    // Once per user: an existing Themes folder is left exactly as it is.
    const QString folder = themesFolder();
    if (existsAt(folder))
        return;
    if (const QString error = makeFolder(folder); !error.isEmpty()) {
        printLine(error);
        return;
    }
    for (const QString& theme : availableThemes()) {
        const QString themeFolder = folder + QLatin1Char('/') + theme;
        if (existsAt(themeFolder))
            continue;
        if (const QString error = makeFolder(themeFolder); !error.isEmpty()) {
            printLine(error);
            continue;
        }
        writeDefaultTheme(theme);
        for (const QString& picture : themePictureNames()) {
            QFile source(installSourcePath(theme, picture));
            const QString target = themeFolder + QLatin1Char('/') + picture + QStringLiteral(".png");
            // Never replace a file that is already there; a failed copy is not reported.
            if (existsAt(target) || !source.open(QIODevice::ReadOnly))
                continue;
            writeFileAtomic(target, source.readAll());
        }
    }
}

QImage Config::themePicture(const QString& picture) const
{
    const QString folder = themesFolder() + QLatin1Char('/') + currentTheme();
    const QString path = folder + QLatin1Char('/') + picture + QStringLiteral(".png");
    // A user may replace a picture at any time: a decoded picture is kept
    // until the watcher sees its file or its folder change, so that painting
    // never touches the disk.
    if (const auto cached = m_pictureCache.constFind(path); cached != m_pictureCache.constEnd())
        return *cached;
    if (!m_pictureWatcher) {
        Config* self = const_cast<Config*>(this);
        m_pictureWatcher = new QFileSystemWatcher(self);
        const auto forget = [self] {
            self->m_pictureCache.clear();
            emit self->themePicturesChanged();
        };
        connect(m_pictureWatcher, &QFileSystemWatcher::fileChanged, this, forget);
        connect(m_pictureWatcher, &QFileSystemWatcher::directoryChanged, this, forget);
    }
    // The Themes folder too, for a theme folder made after its pictures were looked up.
    for (const QString& watched : {themesFolder(), folder, path}) {
        if (!m_pictureWatcher->files().contains(watched) && !m_pictureWatcher->directories().contains(watched)
            && existsAt(watched))
            m_pictureWatcher->addPath(watched);
    }
    QImage image = QFileInfo(path).isFile() ? loadPicture(path) : QImage();
    if (image.isNull()) {
        const QString fallback = fallbackPath(picture);
        auto built = m_pictureCache.constFind(fallback);
        if (built == m_pictureCache.constEnd())
            built = m_pictureCache.insert(fallback, loadPicture(fallback));
        image = *built;
    }
    m_pictureCache.insert(path, image);
    return image;
}
