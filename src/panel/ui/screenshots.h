#pragma once
// Pictures of every window for the documentation: opens each window in
// turn, saves what it shows as a PNG in a folder, and closes the panel.
// Message boxes go to standard error meanwhile, so nothing waits for a user.
#include <QString>

#include "link/sim/sim_unit.h"
#include "panel/ui/panel_windows.h"

namespace zenta {

// Returns false when a picture could not be saved. On the simulated unit
// (`sim`, else null) the instruments also show a 1.3 MHz input and a
// failed capture.
bool take_screenshots(PanelWindows& windows, QtHost& host, const QString& folder,
                      sim::SimUnit* sim);

}  // namespace zenta
