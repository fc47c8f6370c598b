#pragma once

#include <windows.h>
// Needs windows.h first.
#include <commctrl.h>

#include "window/dpi.h"

namespace window {

/// Gives a list view with check boxes the system's boxes at a density; its own are
/// made once and stay as they are on another screen. The list view owns the images.
void setCheckImages(HWND list, window::Dpi dpi);

}  // namespace window
