#pragma once

#include <windows.h>

#include <string>

#include "window/dpi.h"

namespace window {

/// Height of a framed dialog's buttons in units of 1/96 inch.
inline constexpr int kFormButton = 28;

/// A window's client area in units of 1/96 inch.
struct FormArea {
  FormArea(HWND window, window::Dpi dpi);
  int width;
  int height;
};

/// Units that the text of a button or label needs.
[[nodiscard]] int textUnits(HWND control, HFONT font, window::Dpi dpi);
[[nodiscard]] int buttonWidth(HWND button, HFONT font, window::Dpi dpi);

/// Units that a field of one line takes in height: it draws its text at its top, so no
/// higher than the text.
[[nodiscard]] int fieldHeight(HFONT font, window::Dpi dpi);

/// Units that a text takes in height when its lines are broken to a width.
[[nodiscard]] int textHeightUnits(const std::wstring& text, HFONT font, int width, window::Dpi dpi);

/// A group box's window text for a caption whose letter, if any, is marked.
[[nodiscard]] std::string groupCaption(const std::string& marked);

/// Gives every control of a window its font.
void setFont(HWND window, HFONT font);

}  // namespace window
