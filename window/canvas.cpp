#include "window/canvas.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "window/gdi.h"

namespace window {
namespace {

constexpr std::uint32_t rgb(COLORREF colour) {
  return static_cast<std::uint32_t>(GetRValue(colour) << 16 | GetGValue(colour) << 8 |
                                    GetBValue(colour));
}

std::uint32_t mix(std::uint32_t below, std::uint32_t above, double share) {
  std::uint32_t mixed = 0;
  for (const int shift : {0, 8, 16}) {
    const double from = (below >> shift) & 0xff;
    const double to = (above >> shift) & 0xff;
    mixed |= static_cast<std::uint32_t>(std::lround(from + (to - from) * share)) << shift;
  }
  return mixed;
}

/// Of a point to the edge of a rectangle with round corners; negative inside.
double roundedDistance(double x, double y, const RECT& area, double radius) {
  const double half_width = (area.right - area.left) / 2.0;
  const double half_height = (area.bottom - area.top) / 2.0;
  const double across = std::abs(x - area.left - half_width) - half_width + radius;
  const double down = std::abs(y - area.top - half_height) - half_height + radius;
  return std::hypot(std::max(across, 0.0), std::max(down, 0.0)) +
         std::min(std::max(across, down), 0.0) - radius;
}

RECT around(double x, double y, double radius) {
  return {
      static_cast<LONG>(std::floor(x - radius)) - 1, static_cast<LONG>(std::floor(y - radius)) - 1,
      static_cast<LONG>(std::ceil(x + radius)) + 1, static_cast<LONG>(std::ceil(y + radius)) + 1};
}

}  // namespace

Canvas::Canvas(HDC target, SIZE size, POINT origin)
    : target_(target),
      size_{std::max(size.cx, 1L), std::max(size.cy, 1L)},
      origin_(origin),
      dc_(CreateCompatibleDC(target)) {
  BITMAPINFO info{};
  info.bmiHeader = {sizeof(BITMAPINFOHEADER), size_.cx, -size_.cy, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  void* bits = nullptr;
  bitmap_.reset(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
  if (bits != nullptr)
    pixels_ = {static_cast<std::uint32_t*>(bits), static_cast<std::size_t>(size_.cx * size_.cy)};
  former_ = SelectObject(dc(), bitmap_.get());
  SetViewportOrgEx(dc(), -origin_.x, -origin_.y, nullptr);
}

Canvas::~Canvas() {
  SelectObject(dc(), former_);
}

void Canvas::fill(COLORREF colour) {
  std::fill(pixels_.begin(), pixels_.end(), rgb(colour));
}

template <typename Distance>
void Canvas::shape(const RECT& bounds, COLORREF colour, double opacity, const Distance& distance) {
  if (pixels_.empty()) return;
  GdiFlush();  // what GDI has still to draw comes first
  const std::uint32_t above = rgb(colour);
  const LONG left = std::max(bounds.left - origin_.x, 0L);
  const LONG right = std::min(bounds.right - origin_.x, size_.cx);
  const LONG bottom = std::min(bounds.bottom - origin_.y, size_.cy);
  for (LONG y = std::max(bounds.top - origin_.y, 0L); y < bottom; ++y) {
    for (LONG x = left; x < right; ++x) {
      const double inside = 0.5 - distance(static_cast<double>(x + origin_.x) + 0.5,
                                           static_cast<double>(y + origin_.y) + 0.5);
      if (inside <= 0) continue;
      std::uint32_t& pixel = pixels_[static_cast<std::size_t>(y * size_.cx + x)];
      pixel = mix(pixel, above, std::min(inside, 1.0) * opacity);
    }
  }
}

void Canvas::disc(double x, double y, double radius, COLORREF colour, double opacity) {
  shape(around(x, y, radius), colour, opacity,
        [&](double px, double py) { return std::hypot(px - x, py - y) - radius; });
}

void Canvas::ring(double x, double y, double radius, double width, COLORREF colour,
                  double opacity) {
  shape(around(x, y, radius), colour, opacity, [&](double px, double py) {
    return std::abs(std::hypot(px - x, py - y) - radius + width / 2) - width / 2;
  });
}

void Canvas::bar(const RECT& area, double radius, COLORREF colour, double opacity) {
  shape(area, colour, opacity,
        [&](double x, double y) { return roundedDistance(x, y, area, radius); });
}

void Canvas::mask(const RECT& area, double radius, COLORREF colour) {
  if (pixels_.empty()) return;
  GdiFlush();
  const RECT inside{std::max(area.left - origin_.x, 0L), std::max(area.top - origin_.y, 0L),
                    std::min(area.right - origin_.x, size_.cx),
                    std::min(area.bottom - origin_.y, size_.cy)};
  for (LONG y = inside.top; y < inside.bottom; ++y) {
    const double middle = static_cast<double>(y + origin_.y) + 0.5;
    const double to_edge = std::min(middle - area.top, area.bottom - middle);
    const double into_corner = std::max(radius - to_edge, 0.0);
    const LONG inset = std::lround(radius - std::sqrt(radius * radius - into_corner * into_corner));
    const LONG left = std::max(inside.left, area.left - origin_.x + inset);
    const LONG right = std::min(inside.right, area.right - origin_.x - inset);
    if (left >= right) continue;
    const auto row = pixels_.subspan(static_cast<std::size_t>(y * size_.cx));
    std::fill(row.begin() + left, row.begin() + right, rgb(colour));
  }
}

void Canvas::frame(const RECT& area, double radius, double width, COLORREF colour) {
  shape(area, colour, 1, [&](double x, double y) {
    return std::abs(roundedDistance(x, y, area, radius) + width / 2) - width / 2;
  });
}

void Canvas::text(const wchar_t* text, int length, RECT area, UINT format, HFONT font,
                  COLORREF colour) {
  const SelectScope selected(dc(), font);
  SetBkMode(dc(), TRANSPARENT);
  SetTextColor(dc(), colour);
  DrawTextW(dc(), text, length, &area, format | DT_NOPREFIX);
}

void Canvas::present(POINT at) const {
  BitBlt(target_, at.x, at.y, size_.cx, size_.cy, dc(), origin_.x, origin_.y, SRCCOPY);
}

void tint(HBITMAP picture, COLORREF colour) {
  DIBSECTION section{};
  if (GetObjectW(picture, sizeof(section), &section) != sizeof(section)) return;
  const auto count = static_cast<std::size_t>(section.dsBm.bmWidth) *
                     static_cast<std::size_t>(std::abs(section.dsBm.bmHeight));
  const std::uint32_t opaque = rgb(colour);
  for (std::uint32_t& pixel : std::span(static_cast<std::uint32_t*>(section.dsBm.bmBits), count)) {
    const std::uint32_t alpha = pixel >> 24;
    pixel = mix(0, opaque, alpha / 255.0) | alpha << 24;
  }
}

}  // namespace window
