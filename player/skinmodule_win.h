#pragma once

#include <windows.h>

#include "window/canvas.h"

namespace player {

/// Gives a frameless window the size of a picture and its outline; without an
/// outline it stays a rectangle. The window paints the picture itself.
void ApplySkin(HWND window, const window::Canvas& picture);

/// Lets the user move a frameless window with the mouse button that has just gone
/// down on it; returns when it is released.
void DragWindow(HWND window);

/// The skin that the program's own windows share: a panel with round corners.
/// `size` is the window's in pixels, `scale` the pixels in a unit of 1/96 inch.
void applyPanel(HWND window, SIZE size, double scale);
/// Paints the panel's edge.
void framePanel(window::Canvas& canvas, SIZE size, double scale, COLORREF colour);

}  // namespace player
