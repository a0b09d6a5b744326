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

QPoint SettingsView::placeBeside(const QRect& player, const QSize& frame, const QRect& available)
{
    constexpr int gap = 12;
    const int top = std::clamp(player.top(), available.top(), std::max(available.top(), available.bottom() + 1 - frame.height()));
    const int right = player.right() + 1 + gap;
    if (right + frame.width() <= available.right() + 1)
        return {right, top};
    const int left = player.left() - gap - frame.width();
    if (left >= available.left())
        return {left, top};
    return available.center() - QPoint(frame.width() / 2, frame.height() / 2);
}
