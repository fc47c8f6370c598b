#pragma once

#include <windows.h>

#include <string>

#include "player/canvas_win.h"
#include "player/theme_win.h"
#include "window/dpi.h"
#include "window/unique_handle.h"

namespace dialogs {

/// The look of the small frameless windows: colours, fonts, and the painting of ground
/// and buttons. Made anew when colours or density change.
class SmallForm {
 public:
  /// Sizes in units of 1/96 inch that such windows have in common.
  static constexpr int kMargin = 20;
  static constexpr int kIcon = 32;
  static constexpr int kTextLeft = kMargin + kIcon + 14;
  static constexpr int kButtonHeight = 30;

  explicit SmallForm(window::Dpi dpi);

  [[nodiscard]] const player::Theme& theme() const { return theme_; }
  [[nodiscard]] HFONT headingFont() const { return heading_font_.get(); }
  [[nodiscard]] HFONT font() const { return font_.get(); }

  /// Ground, edge and the program's icon.
  void ground(player::Canvas& canvas, SIZE size) const;
  /// Round a text box; `area` is the box with its edge.
  void field(player::Canvas& canvas, const RECT& area, bool focus) const;
  void button(const DRAWITEMSTRUCT& item, bool is_default) const;

  /// For WM_CTLCOLORSTATIC and WM_CTLCOLOREDIT.
  [[nodiscard]] LRESULT labelColours(HDC dc, COLORREF text) const;
  [[nodiscard]] LRESULT fieldColours(HDC dc) const;

  /// Width in units of a button that holds the text.
  [[nodiscard]] int buttonWidth(const std::wstring& text) const;

 private:
  const window::Dpi dpi_;
  const player::Theme theme_;
  const window::UniqueFont heading_font_;
  const window::UniqueFont font_;
  const window::UniqueBrush background_;
  const window::UniqueBrush surface_;
  const window::UniqueIcon icon_;
};

}  // namespace dialogs
