#include "player/skinmodule_win.h"

#include "player/skinmodule.h"
#include "window/gdi.h"

namespace player {
namespace {

using UniqueRegion = base::UniqueHandle<HRGN, DeleteObject>;

constexpr double kRadius = 9;  // units
constexpr COLORREF kCut = RGB(0xff, 0x00, 0xff);
constexpr COLORREF kKept = RGB(0x00, 0x00, 0x00);

/// Without the last column: what touches the right edge would be lost.
RECT panel(SIZE size) {
  return {0, 0, size.cx - 1, size.cy};
}

/// The same union in fewer pieces: uniting takes most of the time.
std::vector<SkinRect> joined(const std::vector<SkinRect>& pieces) {
  std::vector<SkinRect> taller;
  for (const SkinRect& piece : pieces) {
    const bool continues = !taller.empty() && taller.back().left == piece.left &&
                           taller.back().right == piece.right && taller.back().bottom == piece.top;
    if (continues)
      taller.back().bottom = piece.bottom;
    else
      taller.push_back(piece);
  }
  return taller;
}

UniqueRegion unite(const std::vector<SkinRect>& pieces) {
  UniqueRegion region;
  for (const SkinRect& piece : joined(pieces)) {
    UniqueRegion next(CreateRectRgn(piece.left, piece.top, piece.right, piece.bottom));
    if (region)
      CombineRgn(region.get(), region.get(), next.get(), RGN_OR);
    else
      region = std::move(next);
  }
  return region;
}

}  // namespace

void ApplySkin(HWND window, const window::Canvas& picture) {
  const SIZE size = picture.size();
  SetWindowPos(window, nullptr, 0, 0, size.cx, size.cy, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
  UniqueRegion region =
      unite(RegionFromPicture(picture.pixels(), static_cast<std::size_t>(size.cx)));
  // The window's from here on, unless the system refuses it.
  if (SetWindowRgn(window, region.get(), TRUE) != FALSE) static_cast<void>(region.release());
}

void DragWindow(HWND window) {
  ReleaseCapture();
  SendMessageW(window, WM_NCLBUTTONDOWN, HTCAPTION, 0);
}

void applyPanel(HWND window, SIZE size, double scale) {
  const window::WindowDc screen(nullptr);
  window::Canvas picture(screen.get(), size);
  picture.fill(kCut);
  picture.mask(panel(size), kRadius * scale, kKept);
  ApplySkin(window, picture);
}

void framePanel(window::Canvas& canvas, SIZE size, double scale, COLORREF colour) {
  canvas.frame(panel(size), kRadius * scale, scale, colour);
}

}  // namespace player
