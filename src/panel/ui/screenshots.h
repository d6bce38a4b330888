#pragma once
// Pictures of every window for the documentation: opens each window in
// turn, saves what it shows as a PNG in a folder, and closes the panel.
// Message boxes go to standard error meanwhile, so nothing waits for a user.
#include <QString>

#include "panel/ui/panel_windows.h"

namespace zenta {

// Returns false when a picture could not be saved.
bool take_screenshots(PanelWindows& windows, QtHost& host, const QString& folder);

}  // namespace zenta
