// plinkartgen renders the theme pictures, the application icon and the
// contact sheet from the drawings in this folder.
//
//   plinkartgen --themes DIR THEME...   writes DIR/<theme>-<picture>@2x.png
//   plinkartgen --icon FILE             writes the 256 × 256 application icon
//   plinkartgen --icons DIR             writes DIR/<n>x<n>/apps/plinkbox.png, every panel size
//   plinkartgen --ui-icons DIR          writes DIR/<name>-<n>.png, the settings window's icons
//   plinkartgen --contact-sheet FILE [THEME...]
//                                       writes the themes (by default the four
//                                       of the catalogue) as the player shows
//                                       them, at 1× and 1.5×
//
// The build runs the first two. The contact sheet in docs/ is remade with
//   build/tools/artgen/plinkartgen --contact-sheet docs/contact-sheet.png
// Palettes are in palette.cpp, shared shape numbers in style.h, glyphs in
// glyphs.cpp, the knob's pixel art in elements.cpp.

#include "contactsheet.h"
#include "icon.h"
#include "pictures.h"
#include "uiicons.h"

#include "store/console.h"
#include "themes/defaultlayouts.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>

namespace {

bool save(const QImage& image, const QString& path)
{
    QDir().mkpath(QFileInfo(path).path());
    if (!image.isNull() && image.save(path, "PNG"))
        return true;
    printLine(QStringLiteral("Could not write %1").arg(path));
    return false;
}

int usage()
{
    printLine(QStringLiteral(
        "usage: plinkartgen --themes DIR THEME... | --icon FILE | --icons DIR | --ui-icons DIR | "
        "--contact-sheet FILE"));
    return 2;
}

} // namespace

int main(int argc, char* argv[])
{
    QStringList args;
    for (int i = 1; i < argc; ++i)
        args.append(QString::fromLocal8Bit(argv[i]));
    if (args.size() < 2)
        return usage();

    const QString& mode = args.at(0);
    if (mode == QLatin1String("--contact-sheet")) {
        // Its captions and sample titles need fonts; no window is ever shown.
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen");
        QGuiApplication app(argc, argv);
        QStringList themes = args.mid(2);
        if (themes.isEmpty())
            themes = {QStringLiteral("nano-tangerine"), QStringLiteral("neo-lime"),
                      QStringLiteral("mini-blueberry"), QStringLiteral("max-graphite")};
        for (const QString& theme : themes) {
            if (!familyOfTheme(theme)) {
                printLine(QStringLiteral("Unknown theme %1").arg(theme));
                return 1;
            }
        }
        return save(renderContactSheet(themes), args.at(1)) ? 0 : 1;
    }
    // The skins are shapes only: no platform plugin, nothing to initialise.
    if (mode == QLatin1String("--icon"))
        return save(renderIcon(), args.at(1)) ? 0 : 1;
    if (mode == QLatin1String("--icons")) {
        bool ok = true;
        for (const int size : appIconSizes())
            ok = save(renderAppIcon(size), QStringLiteral("%1/%2x%2/apps/plinkbox.png").arg(args.at(1)).arg(size)) && ok;
        return ok ? 0 : 1;
    }
    if (mode == QLatin1String("--ui-icons")) {
        bool ok = true;
        for (const QString& name : uiIconNames()) {
            for (const int size : uiIconSizes())
                ok = save(renderUiIcon(name, size), QStringLiteral("%1/%2-%3.png").arg(args.at(1), name).arg(size)) && ok;
        }
        return ok ? 0 : 1;
    }
    if (mode != QLatin1String("--themes") || args.size() < 3)
        return usage();

    const QDir out(args.at(1));
    if (!out.exists() && !QDir().mkpath(out.path())) {
        printLine(QStringLiteral("Could not create %1").arg(out.path()));
        return 1;
    }
    bool ok = true;
    for (const QString& theme : args.mid(2)) {
        if (!familyOfTheme(theme)) {
            printLine(QStringLiteral("Unknown theme %1").arg(theme));
            ok = false;
            continue;
        }
        for (const QString& picture : themePictureNames()) {
            const QString name = theme + QLatin1Char('-') + picture + QStringLiteral("@2x.png");
            ok = save(renderPicture(theme, picture), out.filePath(name)) && ok;
        }
    }
    return ok ? 0 : 1;
}
