#pragma once

#include <windows.h>

#include <cstdint>
#include <span>

#include "base/unique_handle_win.h"

namespace window {

/// A bitmap that a window or control is painted into before it is shown: shapes
/// with smooth edges, and everything else through its device context. Coordinates
/// are pixels.
class Canvas {
 public:
  /// `origin` is the point of the window that the bitmap's corner stands for: all
  /// drawing is in the window's coordinates.
  Canvas(HDC target, SIZE size, POINT origin = {});
  ~Canvas();
  Canvas(const Canvas&) = delete;
  Canvas& operator=(const Canvas&) = delete;

  [[nodiscard]] HDC dc() const { return dc_.get(); }
  [[nodiscard]] SIZE size() const { return size_; }
  /// Rows from the top, 0xRRGGBB; empty if the bitmap could not be made.
  [[nodiscard]] std::span<const std::uint32_t> pixels() const { return pixels_; }

  void fill(COLORREF colour);
  void disc(double x, double y, double radius, COLORREF colour, double opacity = 1);
  void ring(double x, double y, double radius, double width, COLORREF colour, double opacity = 1);
  /// A rectangle with round corners.
  void bar(const RECT& area, double radius, COLORREF colour, double opacity = 1);
  /// The same without smooth edges: a pixel is in or out.
  void mask(const RECT& area, double radius, COLORREF colour);
  /// The edge of one, inside of it.
  void frame(const RECT& area, double radius, double width, COLORREF colour);
  void text(const wchar_t* text, int length, RECT area, UINT format, HFONT font, COLORREF colour);

  /// Copies the bitmap to the target given at first, with its corner at `at`.
  void present(POINT at = {}) const;

 private:
  template <typename Distance>
  void shape(const RECT& bounds, COLORREF colour, double opacity, const Distance& distance);

  const HDC target_;
  const SIZE size_;
  const POINT origin_;
  base::UniqueDc dc_;
  base::UniqueBitmap bitmap_;
  HGDIOBJ former_;
  std::span<std::uint32_t> pixels_;
};

/// `picture`, a 32-bit bitmap with premultiplied alpha, in one colour.
void tint(HBITMAP picture, COLORREF colour);

}  // namespace window
