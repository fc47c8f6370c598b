#include "player/volume_slider_win.h"

#include <commctrl.h>
#include <windowsx.h>

#include <utility>

#include "window/gdi.h"

namespace player {

void VolumeSlider::attach(HWND trackbar, Background background) {
  trackbar_ = trackbar;
  background_ = std::move(background);
  SendMessageW(trackbar_, TBM_SETRANGE, FALSE, MAKELPARAM(0, Volume::kMax));
  SendMessageW(trackbar_, TBM_SETLINESIZE, 0, Volume::kStep);
  SendMessageW(trackbar_, TBM_SETPAGESIZE, 0, 2 * Volume::kStep);
  follow(volume_.get());
}

void VolumeSlider::setLook(const window::Theme& theme, double scale) {
  theme_ = theme;
  scale_ = scale;
  SendMessageW(trackbar_, TBM_SETTHUMBLENGTH, static_cast<WPARAM>(16 * scale), 0);
}

void VolumeSlider::follow(int volume) const {
  if (SendMessageW(trackbar_, TBM_GETPOS, 0, 0) != volume)
    SendMessageW(trackbar_, TBM_SETPOS, TRUE, volume);
  InvalidateRect(trackbar_, nullptr, FALSE);
}

void VolumeSlider::scrolled() const {
  volume_.set(static_cast<int>(SendMessageW(trackbar_, TBM_GETPOS, 0, 0)));
  InvalidateRect(trackbar_, nullptr, FALSE);
}

std::optional<LRESULT> VolumeSlider::onControl(UINT message, WPARAM, LPARAM lparam) const {
  switch (message) {
    case WM_ERASEBKGND:
      return 1;
    case WM_PAINT:
      paint();
      return 0;
    case WM_LBUTTONDOWN:  // the thumb is then below the pointer, to be dragged on
      jumpTo(GET_X_LPARAM(lparam));
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

bool VolumeSlider::key(Volume& volume, WPARAM key) {
  switch (key) {
    case VK_UP:
    case VK_RIGHT:
      volume.set(volume.get() + Volume::kStep);
      return true;
    case VK_DOWN:
    case VK_LEFT:
      volume.set(volume.get() - Volume::kStep);
      return true;
    default:
      return false;
  }
}

void VolumeSlider::wheel(Volume& volume, WPARAM wparam) {
  volume.set(volume.get() + MulDiv(GET_WHEEL_DELTA_WPARAM(wparam), Volume::kStep, WHEEL_DELTA));
}

RECT VolumeSlider::channel() const {
  RECT area{};
  SendMessageW(trackbar_, TBM_GETCHANNELRECT, 0, reinterpret_cast<LPARAM>(&area));
  return area;
}

void VolumeSlider::jumpTo(int x) const {
  const RECT area = channel();
  RECT thumb{};
  SendMessageW(trackbar_, TBM_GETTHUMBRECT, 0, reinterpret_cast<LPARAM>(&thumb));
  if (x >= thumb.left && x < thumb.right) return;  // held by the thumb
  const int half = (thumb.right - thumb.left) / 2;
  const int length = area.right - area.left - 2 * half;
  if (length <= 0) return;
  volume_.set(MulDiv(x - area.left - half, Volume::kMax, length));
}

void VolumeSlider::paint() const {
  const window::PaintScope paint(trackbar_);
  RECT own{};
  GetClientRect(trackbar_, &own);
  POINT origin{};
  MapWindowPoints(trackbar_, GetParent(trackbar_), &origin, 1);
  window::Canvas canvas(paint.dc(), {own.right, own.bottom}, origin);
  background_(canvas);

  RECT thumb{};
  SendMessageW(trackbar_, TBM_GETTHUMBRECT, 0, reinterpret_cast<LPARAM>(&thumb));
  const double x = origin.x + (thumb.left + thumb.right) / 2.0;
  const double y = origin.y + own.bottom / 2.0;
  const RECT area = channel();
  const double half = 2 * scale_;
  const auto edge = [](double value) { return static_cast<LONG>(value + 0.5); };
  const RECT groove{origin.x + area.left, edge(y - half), origin.x + area.right, edge(y + half)};
  canvas.bar(groove, half, theme_.surface);
  if (theme_.high_contrast) canvas.frame(groove, half, scale_, theme_.border);
  canvas.bar({groove.left, groove.top, edge(x), groove.bottom}, half, theme_.accent);
  canvas.disc(x, y, 7 * scale_, theme_.text);
  if (show_focus_ && GetFocus() == trackbar_)
    canvas.ring(x, y, 10 * scale_, 1.5 * scale_, theme_.text);
  canvas.present();
}

}  // namespace player
