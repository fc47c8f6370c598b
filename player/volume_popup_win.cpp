#include "player/volume_popup_win.h"

#include <commctrl.h>

#include <algorithm>
#include <string>

#include "base/utf.h"
#include "player/player_ids.h"
#include "player/skinmodule_win.h"
#include "res/resource.h"
#include "window/font.h"
#include "window/gdi.h"
#include "window/picture.h"

namespace player {
namespace {

// Sizes in units of 1/96 inch.
constexpr SIZE kSize{260, 48};
constexpr SIZE kPicture{20, 20};
constexpr int kMargin = 12;
constexpr int kSliderLeft = 40;
constexpr int kSliderWidth = 164;
constexpr int kSliderTop = 12;
constexpr int kSliderHeight = 24;

/// Where the popup goes when it would leave the screen at the left or the top: ten
/// twips, of which 1440 make an inch.
int tenTwips() {
  return MulDiv(10, window::Dpi::of(nullptr).value(), 1440);
}

}  // namespace

VolForm::VolForm(Volume& volume, const menu::MenuTree& menu)
    : volume_(volume), menu_(menu), slider_(volume) {}

void VolForm::make() {
  create({.class_name = L"volform",
          .caption = menu_.mnuplayervolume.Caption,
          .style = WS_POPUP | WS_CLIPCHILDREN,
          .ex_style = WS_EX_CONTROLPARENT | WS_EX_TOOLWINDOW | WS_EX_TOPMOST,
          .background = -1});
  INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_BAR_CLASSES};
  InitCommonControlsEx(&classes);
  const HWND trackbar =
      addControl(TRACKBAR_CLASSW, menu_.mnuplayervolume.Caption,
                 TBS_HORZ | TBS_NOTICKS | TBS_FIXEDLENGTH | WS_TABSTOP, kIdSlider1);
  slider_.attach(trackbar, [this](window::Canvas& canvas) { background(canvas); });
  hook(trackbar);
  volume_listener_ = volume_.listen([this](int value) {
    slider_.follow(value);
    InvalidateRect(handle(), nullptr, FALSE);
  });
}

VolForm::~VolForm() {
  volume_.forget(volume_listener_);
  destroy();
}

void VolForm::mnuplayervolume_Click() {
  if (handle() == nullptr) make();
  dress();
  POINT at{};
  GetCursorPos(&at);
  const SIZE size{scale(kSize.cx), scale(kSize.cy)};
  LONG left = at.x - size.cx / 2;
  LONG top = at.y - size.cy;
  if (left < 0) left = tenTwips();
  if (top < 0) top = tenTwips();
  MONITORINFO info{};
  info.cbSize = sizeof(info);
  GetMonitorInfoW(MonitorFromPoint(at, MONITOR_DEFAULTTONEAREST), &info);
  left = std::min(left, info.rcMonitor.right - size.cx);
  SetWindowPos(handle(), HWND_TOPMOST, left, top, size.cx, size.cy, SWP_NOACTIVATE);
  const std::wstring caption = base::toWide(menu_.mnuplayervolume.Caption);
  SetWindowTextW(handle(), caption.c_str());
  SetWindowTextW(slider_.handle(), caption.c_str());
  show();
  SetFocus(slider_.handle());
}

void VolForm::dress() {
  theme_ = window::Theme::current();
  picture_ = window::loadPicture(IDP_VOLUME, kPicture, dpi());
  if (theme_.high_contrast) window::tint(picture_.get(), theme_.text);
  font_ = window::messageFont(dpi());
  slider_.setLook(theme_, dpi().value() / 96.0);
  place(slider_.handle(), kSliderLeft, kSliderTop, kSliderWidth, kSliderHeight);
  applyPanel(handle(), {scale(kSize.cx), scale(kSize.cy)}, dpi().value() / 96.0);
}

std::optional<LRESULT> VolForm::onMessage(UINT message, WPARAM wparam, LPARAM) {
  switch (message) {
    case WM_ERASEBKGND:
      return 1;
    case WM_PAINT:
      return onPaint(), 0;
    case WM_HSCROLL:
      return slider_.scrolled(), 0;
    case WM_MOUSEWHEEL:
      return VolumeSlider::wheel(volume_, wparam), 0;
    case WM_ACTIVATE:
      if (LOWORD(wparam) == WA_INACTIVE) hide();
      return std::nullopt;
    case WM_COMMAND:
      if (LOWORD(wparam) == IDCANCEL || LOWORD(wparam) == IDOK) hide();
      return 0;
    case WM_CLOSE:
      return hide(), 0;
    default:
      return std::nullopt;
  }
}

std::optional<LRESULT> VolForm::onControl(HWND, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_KEYDOWN && VolumeSlider::key(volume_, wparam)) return 0;
  if (message == WM_MOUSEWHEEL) return VolumeSlider::wheel(volume_, wparam), 0;
  return slider_.onControl(message, wparam, lparam);
}

void VolForm::onPaint() {
  const window::PaintScope paint(handle());
  window::Canvas canvas(paint.dc(), {scale(kSize.cx), scale(kSize.cy)});
  background(canvas);
  canvas.present();
}

void VolForm::background(window::Canvas& canvas) const {
  const SIZE size{scale(kSize.cx), scale(kSize.cy)};
  canvas.fill(theme_.background);
  if (picture_) {
    window::drawPicture(canvas.dc(), picture_.get(), scale(kMargin),
                        (size.cy - scale(kPicture.cy)) / 2);
  }
  const std::wstring percent = std::to_wstring(MulDiv(volume_.get(), 100, Volume::kMax)) + L"%";
  canvas.text(percent.c_str(), static_cast<int>(percent.size()),
              {scale(kSliderLeft + kSliderWidth), 0, size.cx - scale(kMargin), size.cy},
              DT_SINGLELINE | DT_VCENTER | DT_RIGHT, font_.get(), theme_.muted);
  framePanel(canvas, size, dpi().value() / 96.0, theme_.border);
}

}  // namespace player
