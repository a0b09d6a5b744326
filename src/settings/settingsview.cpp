#include "settings/settingsview.h"

#include "settings/generalsettingsview.h"
#include "settings/playlistsettingsview.h"
#include "settings/themedicon.h"

#include <QTabWidget>
#include <QVBoxLayout>

SettingsView::SettingsView(Config& config, QWidget* parent)
    : QWidget(parent, Qt::Window)
{
    setWindowTitle(tr("Settings"));
    resize(640, 640);

    auto* tabs = new QTabWidget(this);
    tabs->setObjectName(QStringLiteral("settingsTabs"));
    tabs->setDocumentMode(true);
    tabs->addTab(new GeneralSettingsView(config, tabs),
                 themedIcon(QStringLiteral("preferences-system"), QStyle::SP_ComputerIcon, this), tr("General"));
    tabs->addTab(new PlaylistSettingsView(config, tabs),
                 themedIcon(QStringLiteral("view-media-playlist"), QStyle::SP_FileDialogListView, this),
                 tr("Playlists"));

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(tabs);
}

SettingsView::~SettingsView() = default;
