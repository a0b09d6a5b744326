#pragma once

class QWidget;

// Desktop facts and requests that Qt has no API for.

// Whether a compositing manager runs, so that see-through pixels are real.
bool compositorRunning();

// Asks the window manager to show the window on every workspace (X11 only;
// elsewhere nothing happens).
void showOnAllWorkspaces(QWidget* window);
