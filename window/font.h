#pragma once

#include <string>

#include "base/unique_handle_win.h"
#include "window/dpi.h"

namespace window {

/// The system's message font at a density, `percent` of its size; `weight` is
/// FW_NORMAL, FW_BOLD, ...
base::UniqueFont messageFont(Dpi dpi, int percent = 100, int weight = FW_NORMAL);

/// Pixels that a line of text takes.
[[nodiscard]] int textWidth(HFONT font, const std::wstring& text);
/// Pixels from one line of text to the next.
[[nodiscard]] int lineHeight(HFONT font);

}  // namespace window
