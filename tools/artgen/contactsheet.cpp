#include "contactsheet.h"

#include "pictures.h"

#include "themes/defaultlayouts.h"

#include <QFont>
#include <QFontMetrics>
#include <QPainter>

namespace {

// The sheet shows a standard-density screen: one pixel per point.
constexpr double sheetScale = 1.0;

struct Shown {
    double scale = 1.0;
    bool minimised = false;
    bool playing = false;
    bool hoverForward = false;
};

QRectF frameAt(double x, double y, double w, double h, double s)
{
    return QRectF((x - w / 2) * s, (y - h / 2) * s, w * s, h * s);
}

// One view of the player: the background stretched over the window, the
// elements on top in drawing order, then everything outside the background's
// shape cut away as the window mask does.
QImage composePlayer(const QString& theme, const Shown& shown)
{
    const ThemeData& l = familyLayout(*familyOfTheme(theme));
    const double s = shown.scale * sheetScale;
    const QSizeF size = shown.minimised ? QSizeF(l.playerMinWidth, l.playerMinHeight)
                                        : QSizeF(l.playerWidth, l.playerHeight);
    QImage view(qRound(size.width() * s), qRound(size.height() * s),
                QImage::Format_ARGB32_Premultiplied);
    view.fill(Qt::transparent);
    QPainter painter(&view);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform
                           | QPainter::TextAntialiasing);
    const auto picture = [&theme](const QString& name) { return renderPicture(theme, name); };
    const QImage background = picture(shown.minimised ? QStringLiteral("player-min")
                                                      : QStringLiteral("player"));
    painter.drawImage(QRectF(QPointF(0, 0), size * s), background);

    const auto place = [&](const QString& name, double x, double y, double w, double h) {
        if (w > 0 && h > 0)
            painter.drawImage(frameAt(x, y, w, h, s), picture(name));
    };
    place(QStringLiteral("close"), l.closePosX, l.closePosY, l.closeWidth, l.closeHeight);
    place(QStringLiteral("min"), l.minPosX, l.minPosY, l.minWidth, l.minHeight);
    place(QStringLiteral("rr"), l.rrPosX, l.rrPosY, l.rrWidth, l.rrHeight);
    place(shown.playing ? QStringLiteral("pause") : QStringLiteral("play"), l.playPosX, l.playPosY,
          l.playWidth, l.playHeight);
    place(shown.hoverForward ? QStringLiteral("ff-on") : QStringLiteral("ff"), l.ffPosX, l.ffPosY,
          l.ffWidth, l.ffHeight);
    place(QStringLiteral("playlist-menu"), l.playlistMenuPosX, l.playlistMenuPosY,
          l.playlistMenuWidth, l.playlistMenuHeight);
    place(QStringLiteral("track-menu"), l.trackMenuPosX, l.trackMenuPosY, l.trackMenuWidth,
          l.trackMenuHeight);
    if (shown.playing) {
        painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
        const double x = l.scrubberMinPosX + 0.4 * (l.scrubberMaxPosX - l.scrubberMinPosX);
        place(QStringLiteral("track-scrubber"), x, l.scrubberMinPosY, l.scrubberWidth,
              l.scrubberHeight);
        painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
    }
    place(QStringLiteral("track-album"), l.trackArtPosX, l.trackArtPosY, l.trackArtWidth,
          l.trackArtHeight);

    const auto text = [&](const QString& line, double x, double y, int points, bool bold) {
        if (points < 1)
            return;
        QFont font;
        font.setPixelSize(qRound(points * s));
        font.setBold(bold);
        painter.setFont(font);
        painter.setPen(l.textReversed ? Qt::white : Qt::black);
        // The text box keeps its unscaled width, as the player lays it out.
        const double w = l.trackTextWidth * sheetScale;
        const QRectF box(x * s - w / 2, y * s - points * s, w, 2 * points * s);
        painter.drawText(box, Qt::AlignCenter,
                         painter.fontMetrics().elidedText(line, Qt::ElideRight, int(w)));
    };
    text(QStringLiteral("Evening Tide"), l.trackNamePosX, l.trackNamePosY, l.trackTextSize, true);
    text(QStringLiteral("The Lanterns"), l.trackArtistPosX, l.trackArtistPosY, l.artistTextSize,
         false);

    // The window mask keeps what is at least half opaque in the background.
    const QImage shape = background.createAlphaMask().scaled(view.size());
    painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
    QImage cut(view.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < cut.height(); ++y) {
        for (int x = 0; x < cut.width(); ++x)
            cut.setPixel(x, y, shape.pixelIndex(x, y) ? qRgba(0, 0, 0, 255) : qRgba(0, 0, 0, 0));
    }
    painter.drawImage(0, 0, cut);
    return view;
}

} // namespace

QImage renderContactSheet(const QStringList& themes)
{
    constexpr int margin = 24;
    constexpr int gap = 24;
    constexpr int label = 22;

    // Lay out first: one row per theme, four views in it.
    struct Cell {
        QImage image;
        QString caption;
    };
    QFont font;
    font.setPixelSize(12);
    const QFontMetrics metrics(font);
    const auto cellWidth = [&metrics](const Cell& cell) {
        return qMax(cell.image.width(), metrics.horizontalAdvance(cell.caption));
    };
    QList<QList<Cell>> rows;
    int width = 0;
    int height = margin;
    for (const QString& theme : themes) {
        QList<Cell> row;
        row.append({composePlayer(theme, {1.0, false, false, false}), theme});
        row.append({composePlayer(theme, {1.0, true, false, false}), QStringLiteral("minimised")});
        row.append({composePlayer(theme, {1.5, false, true, true}), QStringLiteral("1.5×, playing")});
        row.append({composePlayer(theme, {1.5, true, true, false}), QStringLiteral("1.5×, minimised")});
        int rowWidth = margin;
        int rowHeight = 0;
        for (const Cell& cell : row) {
            rowWidth += cellWidth(cell) + gap;
            rowHeight = qMax(rowHeight, cell.image.height());
        }
        width = qMax(width, rowWidth - gap + margin);
        height += label + rowHeight + gap;
        rows.append(row);
    }
    height += margin - gap;

    QImage sheet(width, height, QImage::Format_ARGB32_Premultiplied);
    sheet.fill(QColor(0xe8, 0xe9, 0xeb));
    QPainter painter(&sheet);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setFont(font);
    painter.setPen(QColor(0x55, 0x58, 0x5e));
    int y = margin;
    for (const QList<Cell>& row : rows) {
        int x = margin;
        int rowHeight = 0;
        for (const Cell& cell : row) {
            painter.drawText(QRect(x, y, 400, label - 6), Qt::AlignLeft | Qt::AlignBottom,
                             cell.caption);
            painter.drawImage(x, y + label, cell.image);
            x += cellWidth(cell) + gap;
            rowHeight = qMax(rowHeight, cell.image.height());
        }
        y += label + rowHeight + gap;
    }
    return sheet;
}
