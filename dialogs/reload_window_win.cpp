#include "dialogs/reload_window_win.h"

#include <commctrl.h>

#include <algorithm>
#include <utility>

#include "base/utf.h"
#include "dialogs/dialog_ids.h"
#include "res/resource.h"
#include "window/font.h"
#include "window/gdi.h"

namespace dialogs {
namespace {

// Sizes in units of 1/96 inch.
constexpr int kHeight = 158;
constexpr int kLeastWidth = 400;
constexpr int kMostWidth = 620;  // a heading longer than that is cut
constexpr int kHeadingTop = 16;
constexpr int kHeadingHeight = 22;
constexpr int kStatusTop = 40;
constexpr int kLineHeight = 18;
constexpr int kCountWidth = 56;
constexpr int kBarTop = 76;
constexpr int kBarHeight = 8;
constexpr int kButtonTop = 106;
constexpr int kAbortHeight = 36;  // two lines
constexpr int kGap = 14;

// A quick directory answers faster than anyone can read: painting every genre would
// take longer than loading it.
constexpr UINT kPace = 50;  // ms
constexpr UINT_PTR kPaceTimer = 1;

}  // namespace

ReloadForm::ReloadForm(app::Captions& captions, const app::Messages& messages,
                       std::function<void()> cancel)
    : SkinnedForm(static_cast<window::Window&>(*this)),
      captions_(captions),
      messages_(messages),
      cancel_(std::move(cancel)) {
  listener_ = captions_.listen([this](std::string_view key) {
    if (!dressed() || !key.starts_with("reloadform.")) return;
    readCaptions();
    dress();
  });
}

void ReloadForm::make() {
  create({.class_name = L"reloadform",
          .caption = "Kestrel",
          .style = WS_POPUP | WS_SYSMENU | WS_CLIPCHILDREN,
          .ex_style = WS_EX_CONTROLPARENT | WS_EX_APPWINDOW,
          .width = kLeastWidth,
          .height = kHeight,
          .background = -1,
          .icon = IDI_NORMAL});
  INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_PROGRESS_CLASS};
  InitCommonControlsEx(&classes);
  constexpr DWORD kLabel = SS_NOPREFIX | SS_ENDELLIPSIS;
  addControl(WC_STATICW, {}, kLabel, kIdReloadLabel1);
  addControl(WC_STATICW, {}, kLabel, kIdReloadStatus);
  addControl(WC_STATICW, {}, kLabel | SS_RIGHT, kIdReloadCount);
  hook(addControl(PROGRESS_CLASSW, {}, PBS_SMOOTH, kIdReloadProgress));
  addControl(WC_STATICW, {}, SS_NOPREFIX, kIdReloadAbort);
  hook(addControl(WC_BUTTONW, {}, BS_OWNERDRAW | WS_TABSTOP, IDCANCEL));
}

ReloadForm::~ReloadForm() {
  captions_.forget(listener_);
  destroy();
}

void ReloadForm::show() {
  if (handle() == nullptr) make();
  const bool first = !dressed();
  readCaptions();
  dress();
  if (first || offScreen()) centre(false);
  write(kIdReloadStatus, {});
  write(kIdReloadCount, {});
  write(kIdReloadAbort, {});
  written_ = 0;
  SendMessageW(control(kIdReloadProgress), PBM_SETPOS, 0, 0);
  EnableWindow(control(IDCANCEL), TRUE);
  if (visible()) return;
  window::Window::show();
  SetFocus(control(IDCANCEL));
  UpdateWindow(handle());
}

void ReloadForm::hide() {
  KillTimer(handle(), kPaceTimer);
  late_.reset();
  window::Window::hide();
}

void ReloadForm::progress(const std::string& status, int done, int genres) {
  if (handle() == nullptr) return;
  const bool waiting = late_.has_value();
  late_ = {status, done, genres};
  if (GetTickCount64() - written_ < kPace) {
    if (!waiting) SetTimer(handle(), kPaceTimer, kPace, nullptr);
    return;
  }
  write(*late_);
}

void ReloadForm::write(const Progress& progress) {
  write(kIdReloadStatus, progress.status);
  write(kIdReloadCount,
        std::to_string(progress.done + 1) + " / " + std::to_string(progress.genres));
  const HWND bar = control(kIdReloadProgress);
  SendMessageW(bar, PBM_SETRANGE32, 0, progress.genres);
  SendMessageW(bar, PBM_SETPOS, static_cast<WPARAM>(progress.done), 0);
  InvalidateRect(bar, nullptr, FALSE);
  UpdateWindow(handle());
  written_ = GetTickCount64();
  KillTimer(handle(), kPaceTimer);
  late_.reset();
}

std::optional<LRESULT> ReloadForm::onMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  if (!dressed()) return std::nullopt;  // not shown yet
  switch (message) {
    case WM_COMMAND:
      if (LOWORD(wparam) == IDCANCEL) onCancel();
      return 0;
    case WM_CLOSE:
      return onCancel(), 0;
    case WM_TIMER:
      if (wparam == kPaceTimer && late_) write(*late_);
      return 0;
    case DM_GETDEFID:  // Enter
      return MAKELRESULT(IDCANCEL, DC_HASDEFID);
    case WM_SETFOCUS:
      if (IsWindowEnabled(control(IDCANCEL)) != FALSE) SetFocus(control(IDCANCEL));
      return 0;
    default:
      return onSkinMessage(message, wparam, lparam);
  }
}

std::optional<LRESULT> ReloadForm::onControl(HWND at, UINT message, WPARAM wparam, LPARAM lparam) {
  if (GetDlgCtrlID(at) != kIdReloadProgress)
    return SkinnedForm::onControl(at, message, wparam, lparam);
  if (message == WM_ERASEBKGND) return 1;
  if (message != WM_PAINT || !dressed()) return std::nullopt;
  return paintBar(at), 0;
}

void ReloadForm::onCancel() {
  if (IsWindowEnabled(control(IDCANCEL)) == FALSE) return;
  SetFocus(nullptr);  // a disabled button would keep it
  EnableWindow(control(IDCANCEL), FALSE);
  if (GetForegroundWindow() == handle()) SetFocus(handle());
  write(kIdReloadAbort, messages_.msgreloadabort);
  cancel_();
}

void ReloadForm::readCaptions() {
  const std::string& label1 = captions_.get("reloadform.Label1");
  setText(label1);
  write(kIdReloadLabel1, label1);
  write(IDCANCEL, captions_.get("reloadform.Label4"));
  write(kIdReloadProgress, label1);
}

void ReloadForm::layOut() {
  SendMessageW(control(kIdReloadLabel1), WM_SETFONT, reinterpret_cast<WPARAM>(look().headingFont()),
               FALSE);
  const int heading =
      MulDiv(window::textWidth(look().headingFont(), window::windowText(control(kIdReloadLabel1))),
             window::Dpi::kBase, dpi().value());
  const int width =
      std::clamp(SmallForm::kTextLeft + heading + 4 + SmallForm::kMargin, kLeastWidth, kMostWidth);
  const int right = width - SmallForm::kMargin;
  const int text = right - SmallForm::kTextLeft;
  const int button = look().buttonWidth(window::windowText(control(IDCANCEL)));
  resizeClient(width, kHeight);
  place(control(kIdReloadLabel1), SmallForm::kTextLeft, kHeadingTop, text, kHeadingHeight);
  place(control(kIdReloadStatus), SmallForm::kTextLeft, kStatusTop, text - kCountWidth - 6,
        kLineHeight);
  place(control(kIdReloadCount), right - kCountWidth, kStatusTop, kCountWidth, kLineHeight);
  place(control(kIdReloadProgress), SmallForm::kMargin, kBarTop, width - 2 * SmallForm::kMargin,
        kBarHeight);
  const int abort_width = right - button - kGap - SmallForm::kMargin;
  const std::wstring abort_text = base::toWide(messages_.msgreloadabort);
  const bool one_line = window::textWidth(look().font(), abort_text) < scale(abort_width);
  const int abort_top = kButtonTop + (SmallForm::kButtonHeight - kLineHeight) / 2;
  place(control(kIdReloadAbort), SmallForm::kMargin, one_line ? abort_top : kButtonTop, abort_width,
        kAbortHeight);
  place(control(IDCANCEL), right - button, kButtonTop, button, SmallForm::kButtonHeight);
}

void ReloadForm::paintBar(HWND bar) const {
  const window::PaintScope paint(bar);
  RECT area{};
  GetClientRect(bar, &area);
  window::Canvas canvas(paint.dc(), {area.right, area.bottom});
  canvas.fill(look().theme().background);
  const double radius = area.bottom / 2.0;
  canvas.bar(area, radius, look().theme().surface);
  if (look().theme().high_contrast) canvas.frame(area, radius, scale(1), look().theme().border);
  const auto done = static_cast<int>(SendMessageW(bar, PBM_GETPOS, 0, 0));
  const auto genres = static_cast<int>(SendMessageW(bar, PBM_GETRANGE, FALSE, 0));
  if (done > 0 && genres > 0) {
    RECT filled = area;
    filled.right = std::max(MulDiv(area.right, done, genres), static_cast<int>(area.bottom));
    canvas.bar(filled, radius, look().theme().accent);
  }
  canvas.present();
}

COLORREF ReloadForm::labelColour(int id) const {
  const window::Theme& theme = look().theme();
  switch (id) {
    case kIdReloadLabel1:
      return theme.text;
    case kIdReloadAbort:
      return theme.high_contrast ? theme.text : theme.accent;
    default:
      return theme.muted;
  }
}

bool ReloadForm::offScreen() const {
  return MonitorFromWindow(handle(), MONITOR_DEFAULTTONULL) == nullptr;
}

void ReloadForm::write(int id, const std::string& text) {
  const std::wstring wide = base::toWide(text);
  if (wide != window::windowText(control(id))) SetWindowTextW(control(id), wide.c_str());
}

}  // namespace dialogs
