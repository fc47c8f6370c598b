#include "program/splash_window_win.h"

#include <utility>

#include "base/utf.h"
#include "player/skinmodule_win.h"
#include "res/resource.h"
#include "window/font.h"
#include "window/gdi.h"
#include "window/picture.h"

namespace program {
namespace {

constexpr const char* kLabel1 = "splash.Label1";
constexpr UINT_PTR kTimer1 = 1;
constexpr UINT kTimer1Interval = 100;  // ms

// In 96-dpi units; the picture leaves its lower left plain for the texts.
constexpr SIZE kSize{420, 240};
constexpr int kTextLeft = 30;
constexpr int kVersionTop = 124;
constexpr int kMessageTop = 172;
constexpr SIZE kVersionSize{150, 22};
constexpr SIZE kMessageSize{200, 48};

constexpr COLORREF kBackground = RGB(0x1f, 0x29, 0x33);
constexpr COLORREF kMessageColour = RGB(0xf3, 0xed, 0xe2);
constexpr COLORREF kVersionColour = RGB(0x9f, 0xb3, 0xc3);

void setFont(HWND control, const base::UniqueFont& font) {
  SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()), TRUE);
}

}  // namespace

Splash::Splash(app::Captions& captions, std::string_view version, std::function<void()> timer1)
    : captions_(captions), timer1_(std::move(timer1)) {
  create({.class_name = L"KestrelSplash",
          .caption = "Kestrel",
          .ex_style = WS_EX_TOOLWINDOW,
          .width = kSize.cx,
          .height = kSize.cy,
          .background = -1,
          .icon = IDI_NORMAL});
  version_label_ = addControl(L"STATIC", version, SS_NOPREFIX, -1);
  label1_ = addControl(L"STATIC", captions_.get(kLabel1), SS_NOPREFIX, -1);
  layOut();
  centre(true);
  listener_ = captions_.listen([this](std::string_view key) {
    if (key == kLabel1) SetWindowTextW(label1_, base::toWide(captions_.get(key)).c_str());
  });
  SetTimer(handle(), kTimer1, kTimer1Interval, nullptr);
}

Splash::~Splash() {
  captions_.forget(listener_);
  destroy();
}

void Splash::open() {
  SetWindowPos(handle(), HWND_TOP, 0, 0, 0, 0,
               SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_SHOWWINDOW);
  UpdateWindow(handle());
}

std::optional<LRESULT> Splash::onMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_PAINT:
      onPaint();
      return 0;
    case WM_ERASEBKGND:
      return TRUE;
    case WM_CTLCOLORSTATIC:
      return onLabelColours(reinterpret_cast<HDC>(wparam), reinterpret_cast<HWND>(lparam));
    case WM_TIMER: {
      const auto tick = timer1_;  // may destroy this window
      tick();
      return 0;
    }
    case WM_CLOSE:
      return 0;  // it goes when the program has loaded
    default:
      return std::nullopt;
  }
}

void Splash::onDpiChanged() {
  layOut();
}

void Splash::layOut() {
  picture_ = window::loadPicture(IDP_SPLASH, kSize, dpi());
  picture_brush_.reset(picture_ ? CreatePatternBrush(picture_.get())
                                : CreateSolidBrush(kBackground));
  player::applyPanel(handle(), {scale(kSize.cx), scale(kSize.cy)}, dpi().value() / 96.0);
  place(version_label_, kTextLeft, kVersionTop, kVersionSize.cx, kVersionSize.cy);
  place(label1_, kTextLeft, kMessageTop, kMessageSize.cx, kMessageSize.cy);
  version_font_ = window::messageFont(dpi(), 110);
  label_font_ = window::messageFont(dpi());
  setFont(version_label_, version_font_);
  setFont(label1_, label_font_);
}

void Splash::onPaint() {
  const window::PaintScope paint(handle());
  RECT client{};
  GetClientRect(handle(), &client);
  SetBrushOrgEx(paint.dc(), 0, 0, nullptr);
  FillRect(paint.dc(), &client, picture_brush_.get());
}

LRESULT Splash::onLabelColours(HDC dc, HWND label) const {
  POINT origin{};
  MapWindowPoints(label, handle(), &origin, 1);
  SetBrushOrgEx(dc, -origin.x, -origin.y, nullptr);
  SetBkMode(dc, TRANSPARENT);
  SetTextColor(dc, label == version_label_ ? kVersionColour : kMessageColour);
  return reinterpret_cast<LRESULT>(picture_brush_.get());
}

}  // namespace program
