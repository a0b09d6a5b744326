#include "settings/settingsview.h"

#include "store/config.h"

#include <QTabWidget>
#include <QVBoxLayout>

SettingsView::SettingsView(Config& config, QWidget* parent)
    : QWidget(parent, Qt::Window)
{
    Q_UNUSED(config);
    setWindowTitle(tr("Settings"));
    resize(640, 640);
    auto* tabs = new QTabWidget(this);
    tabs->addTab(new QWidget, tr("General"));
    tabs->addTab(new QWidget, tr("Playlists"));
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
}

SettingsView::~SettingsView() = default;
