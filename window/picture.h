#pragma once

#include <windows.h>

#include "base/unique_handle_win.h"
#include "window/dpi.h"

namespace window {

/// A picture of the program's resources at a density, `units` large (96 dpi), as a
/// 32-bit bitmap with premultiplied alpha. It is a PNG (type RCDATA) in three sizes:
/// `resource` for 96 dpi, the next ones for 144 and 192; the nearest that is large
/// enough is scaled. Null when it is missing or broken.
base::UniqueBitmap loadPicture(int resource, SIZE units, Dpi dpi);

/// Draws such a bitmap over what is there, at its own size.
void drawPicture(HDC dc, HBITMAP picture, int x, int y);

}  // namespace window
