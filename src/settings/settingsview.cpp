#include "settings/settingsview.h"

#include "settings/generalsettingsview.h"
#include "settings/playlistsettingsview.h"
#include "settings/themedicon.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QTabWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <limits>

namespace {

// Controls that do something with Space themselves: ticking a switch,
// pressing a button, typing, selecting a row.
bool takesSpace(const QWidget* widget)
{
    return qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QLineEdit*>(widget)
        || qobject_cast<const QAbstractItemView*>(widget) || qobject_cast<const QComboBox*>(widget)
        || qobject_cast<const QAbstractSpinBox*>(widget);
}

} // namespace

SettingsView::SettingsView(Config& config, QWidget* parent)
    : QWidget(parent, Qt::Window)
{
    setWindowTitle(tr("Settings"));
    resize(640, 640);

    auto* tabs = new QTabWidget(this);
    tabs->setObjectName(QStringLiteral("settingsTabs"));
    tabs->setDocumentMode(true);
    tabs->addTab(new GeneralSettingsView(config, tabs), themedIcon(QStringLiteral("preferences-system"), this),
                 tr("General"));
    tabs->addTab(new PlaylistSettingsView(config, tabs), themedIcon(QStringLiteral("view-media-playlist"), this),
                 tr("Playlists"));

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(tabs);
}

SettingsView::~SettingsView() = default;

bool SettingsView::event(QEvent* event)
{
    // Space is play/pause for the whole program, except where the focused
    // control has a use for it: the override reaches us when that control
    // did not claim the key itself.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->key() == Qt::Key_Space && key->modifiers() == Qt::NoModifier && takesSpace(focusWidget())) {
            event->accept();
            return true;
        }
    }
    return QWidget::event(event);
}

QRect SettingsView::placeBeside(const QRect& player, const QSize& frame, const QSize& smallest, const QRect& available)
{
    // Right of the player, left of it, below, above, centred, each pushed
    // onto the screen: the first that keeps clear of the player. Failing
    // that, the window narrowed to the room right or left of the player, if
    // it still has the width its contents need. Failing that, the place among
    // the first ones, pushed onto the screen, that the player covers least.
    constexpr int gap = 12;
    const auto onScreen = [&](QRect at) {
        at.moveLeft(std::clamp(at.x(), available.left(), std::max(available.left(), available.right() + 1 - at.width())));
        at.moveTop(std::clamp(at.y(), available.top(), std::max(available.top(), available.bottom() + 1 - at.height())));
        return at;
    };
    const auto coveredArea = [&](const QRect& at) {
        const QRect covered = at.intersected(player);
        return covered.isEmpty() ? 0 : qint64(covered.width()) * covered.height();
    };
    const QPoint corners[] = {
        {player.right() + 1 + gap, player.top()},
        {player.left() - gap - frame.width(), player.top()},
        {player.left(), player.bottom() + 1 + gap},
        {player.left(), player.top() - gap - frame.height()},
        available.center() - QPoint(frame.width() / 2, frame.height() / 2),
    };
    QRect best;
    qint64 leastCovered = std::numeric_limits<qint64>::max();
    for (const QPoint corner : corners) {
        const QRect at = onScreen(QRect(corner, frame));
        const qint64 area = coveredArea(at);
        if (area == 0)
            return at;
        if (area < leastCovered) {
            leastCovered = area;
            best = at;
        }
    }
    const int roomRight = available.right() - player.right() - gap;
    const int roomLeft = player.left() - gap - available.left();
    const int room = std::max(roomRight, roomLeft);
    if (room >= smallest.width()) {
        const int left = roomRight >= roomLeft ? player.right() + 1 + gap : available.left();
        return onScreen(QRect(left, player.top(), std::min(room, frame.width()), frame.height()));
    }
    return best;
}
