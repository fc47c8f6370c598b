#pragma once

#include <windows.h>

#include <string>

#include "base/unique_handle_win.h"
#include "window/canvas.h"
#include "window/dpi.h"
#include "window/theme.h"

namespace dialogs {

/// How a button is being used, as it is painted.
struct ButtonLook {
  bool is_default = false;
  bool hot = false;  ///< the pointer is over it
  bool pressed = false;
};

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

  [[nodiscard]] const window::Theme& theme() const { return theme_; }
  /// Pixels in a unit of 1/96 inch.
  [[nodiscard]] double scale() const { return dpi_.value() / 96.0; }
  [[nodiscard]] HFONT headingFont() const { return heading_font_.get(); }
  [[nodiscard]] HFONT font() const { return font_.get(); }

  /// Ground, edge and the program's icon.
  void ground(window::Canvas& canvas, SIZE size) const;
  /// Round a text box; `area` is the box with its edge.
  void field(window::Canvas& canvas, const RECT& area, bool focus) const;
  void button(const DRAWITEMSTRUCT& item, const ButtonLook& look) const;

  /// For WM_CTLCOLORSTATIC and WM_CTLCOLOREDIT.
  [[nodiscard]] LRESULT labelColours(HDC dc, COLORREF text) const;
  [[nodiscard]] LRESULT fieldColours(HDC dc) const;

  /// Width in units of a button that holds the text.
  [[nodiscard]] int buttonWidth(const std::wstring& text) const;

 private:
  const window::Dpi dpi_;
  const window::Theme theme_;
  const base::UniqueFont heading_font_;
  const base::UniqueFont font_;
  const base::UniqueBrush background_;
  const base::UniqueBrush surface_;
  const base::UniqueIcon icon_;
};

}  // namespace dialogs
