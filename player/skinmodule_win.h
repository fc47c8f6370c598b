#pragma once

#include <windows.h>

namespace player {

/// Lets the user move a frameless window with the mouse button that has just gone
/// down on it; returns when it is released.
void DragWindow(HWND window);

}  // namespace player
