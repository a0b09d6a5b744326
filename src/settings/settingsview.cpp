#include "settings/settingsview.h"

#include "settings/focusframestyle.h"
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
#include <QTabBar>
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
    tabs->setAccessibleName(windowTitle());
    tabs->setDocumentMode(true);
    // The tabs are reached by Tab like every other control, whatever the desktop's Tab habit.
    tabs->tabBar()->setFocusPolicy(Qt::StrongFocus);
    tabs->addTab(new GeneralSettingsView(config, tabs), themedIcon(QStringLiteral("preferences-system"), this),
                 tr("General"));
    tabs->addTab(new PlaylistSettingsView(config, tabs), themedIcon(QStringLiteral("view-media-playlist"), this),
                 tr("Playlists"));

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(tabs);

    // Owned by the window; a widget whose style is gone falls back on the application's.
    auto* focusStyle = new FocusFrameStyle;
    focusStyle->setParent(this);
    for (QWidget* child : findChildren<QWidget*>())
        child->setStyle(focusStyle);
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

void SettingsView::keyPressEvent(QKeyEvent* event)
{
    // Escape gets here only when no control had a use for it: an open list,
    // a name being typed and a pending "Are you sure?" take it first.
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

QRect SettingsView::placeBeside(const QRect& player, const QSize& frame, const QRect& available)
{
    // Right of the player, left of it, below, above, then the four corners
    // diagonal to it, each pushed onto the screen: the first that the player
    // covers least. The covered area is a width times a height, so where no
    // side is clear a corner, taking the best room across and the best room
    // up or down, covers least.
    constexpr int gap = 12;
    const QSize size = frame.boundedTo(available.size());
    const auto acrossOnScreen = [&](int x) {
        return std::clamp(x, available.left(), available.right() + 1 - size.width());
    };
    const auto downOnScreen = [&](int y) {
        return std::clamp(y, available.top(), available.bottom() + 1 - size.height());
    };
    const int right = acrossOnScreen(player.right() + 1 + gap);
    const int left = acrossOnScreen(player.left() - gap - size.width());
    const int below = downOnScreen(player.bottom() + 1 + gap);
    const int above = downOnScreen(player.top() - gap - size.height());
    const int alignedX = acrossOnScreen(player.left());
    const int alignedY = downOnScreen(player.top());
    const QPoint places[] = {{right, alignedY}, {left, alignedY}, {alignedX, below}, {alignedX, above},
                             {right, below},    {left, below},    {right, above},    {left, above}};
    QRect best;
    qint64 leastCovered = std::numeric_limits<qint64>::max();
    for (const QPoint place : places) {
        const QRect covered = QRect(place, size).intersected(player);
        const qint64 area = covered.isEmpty() ? 0 : qint64(covered.width()) * covered.height();
        if (area < leastCovered) {
            leastCovered = area;
            best = QRect(place, size);
        }
    }
    return best;
}
