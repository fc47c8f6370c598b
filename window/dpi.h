#pragma once

#include <windows.h>

namespace window {

/// A display density. Sizes are kept in units of 1/96 inch and scaled where they
/// meet the screen. The environment variable KESTREL_DPI (48 to 960) stands in for
/// every density that the system reports, so that 150 % and 200 % can be looked at
/// on any screen.
class Dpi {
 public:
  static constexpr int kBase = 96;

  constexpr explicit Dpi(int value) : value_(value > 0 ? value : kBase) {}

  /// The density of the screen the window is on; of the primary one for null.
  static Dpi of(HWND window);
  /// The density that WM_DPICHANGED announces.
  static Dpi announced(WPARAM wparam);

  [[nodiscard]] constexpr int value() const { return value_; }
  /// Units to pixels, rounded to nearest.
  [[nodiscard]] constexpr int scale(int units) const {
    const int half = units < 0 ? -kBase / 2 : kBase / 2;
    return (units * value_ + half) / kBase;
  }
  /// A system metric (SM_CXSMICON, ...) at this density, in pixels.
  [[nodiscard]] int metric(int index) const;
  /// Size of the window whose client area has this size, both in pixels.
  [[nodiscard]] SIZE frame(SIZE client, DWORD style, DWORD ex_style) const;

  friend constexpr bool operator==(Dpi, Dpi) = default;

 private:
  int value_;
};

}  // namespace window
