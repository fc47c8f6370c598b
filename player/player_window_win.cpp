#include "player/player_window_win.h"

#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>
#include <cmath>

#include "player/player_ids.h"
#include "player/skinmodule_win.h"
#include "res/resource.h"
#include "window/gdi.h"

namespace player {
namespace {

constexpr UINT kTimer1Ms = 4000;  // long enough to read a title
constexpr int kFromEdge = 24;     // of the work area, where the window first stands

constexpr float kTwipsPerInch = 1440;

float twips(LONG pixels) {
  return static_cast<float>(pixels) * kTwipsPerInch /
         static_cast<float>(window::Dpi::of(nullptr).value());
}

/// A settings file may hold any number.
LONG pixels(float twips) {
  constexpr float kFarAway = 30000;
  const float size = twips * static_cast<float>(window::Dpi::of(nullptr).value()) / kTwipsPerInch;
  return std::isfinite(size) ? std::lround(std::clamp(size, -kFarAway, kFarAway)) : 0;
}

bool isTextLabel(int id) {
  return id >= kIdlblName && id <= kIdlblFormat;
}

}  // namespace

PlayerWindow::PlayerWindow(const PlayerWindowParts& parts) : parts_(parts), slider_(parts.volume) {
  create({.class_name = L"frmNetRadio",
          .caption = "Kestrel",
          .style = WS_POPUP | WS_SYSMENU | WS_MINIMIZEBOX | WS_CLIPCHILDREN,
          .ex_style = WS_EX_CONTROLPARENT | WS_EX_APPWINDOW,
          .background = -1,
          .icon = IDI_NORMAL});
  const SIZE size = PlayerLayout::of(dpi(), false).window;
  SetWindowPos(window::Window::handle(), nullptr, 0, 0, size.cx, size.cy,
               SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
  moveTo(firstPlace());
  addControls();
  captions_listener_ = parts_.captions.listen([this](std::string_view) { readCaptions(); });
  volume_listener_ = parts_.volume.listen([this](int volume) { slider_.follow(volume); });
}

PlayerWindow::~PlayerWindow() {
  KillTimer(window::Window::handle(), kIdTimer1);
  parts_.captions.forget(captions_listener_);
  parts_.volume.forget(volume_listener_);
  if (tips_ != nullptr) DestroyWindow(tips_);
  destroy();
}

void PlayerWindow::mnuplayerwindow_Click() {
  if (visible())
    hidePlayer();
  else
    showPlayer();
}

void PlayerWindow::showPlayer() {
  if (!everShown()) {
    dress();
    addTips();
  }
  readCaptions();
  bringIntoView();
  show();
  SetTimer(window::Window::handle(), kIdTimer1, kTimer1Ms, nullptr);
}

void PlayerWindow::hidePlayer() {
  hide();
  KillTimer(window::Window::handle(), kIdTimer1);
}

std::optional<LRESULT> PlayerWindow::onMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  const HWND own = window::Window::handle();
  switch (message) {
    case WM_ERASEBKGND:
      return 1;
    case WM_PAINT:
      if (!everShown()) return std::nullopt;
      return onPaint(), 0;
    case WM_CTLCOLORBTN:
    case WM_CTLCOLORSTATIC:  // what a control fills before it is painted
      if (!everShown()) return std::nullopt;
      SetDCBrushColor(reinterpret_cast<HDC>(wparam), skin_->theme().background);
      return reinterpret_cast<LRESULT>(GetStockObject(DC_BRUSH));
    case WM_DRAWITEM:
      if (everShown()) onDrawItem(*reinterpret_cast<const DRAWITEMSTRUCT*>(lparam));
      return TRUE;
    case WM_COMMAND:
      return onCommand(LOWORD(wparam)), 0;
    case WM_NOTIFY:
      return onNotify(*reinterpret_cast<NMHDR*>(lparam));
    case WM_HSCROLL:
      return slider_.scrolled(), 0;
    case WM_TIMER:
      if (wparam != kIdTimer1) return std::nullopt;
      return Timer1_Timer(), 0;
    case WM_LBUTTONDOWN:
      return DragWindow(own), 0;
    case WM_RBUTTONUP:
    case WM_CONTEXTMENU: {
      POINT at{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
      if (message == WM_RBUTTONUP) ClientToScreen(own, &at);
      return mnupop(at), 0;
    }
    case WM_INITMENUPOPUP:
      if (pop_ == nullptr) return std::nullopt;
      return pop_->opening(reinterpret_cast<HMENU>(wparam)), 0;
    case WM_KEYDOWN:
      if (!onKey(wparam, 0)) return std::nullopt;
      return 0;
    case WM_MOUSEWHEEL:
      return VolumeSlider::wheel(parts_.volume, wparam), 0;
    case WM_MOVE:
      if (IsIconic(own) == FALSE) {
        RECT area{};
        GetWindowRect(own, &area);
        place_ = {area.left, area.top};
      }
      return std::nullopt;
    case WM_SETFOCUS:  // to be handed on: keys are the controls'
      return SetFocus(control(kIdImage1)), 0;
    case WM_DISPLAYCHANGE:
      if (everShown()) bringIntoView();
      return std::nullopt;
    case WM_SETTINGCHANGE:
    case WM_SYSCOLORCHANGE:
    case WM_THEMECHANGED:
      if (everShown()) dress();
      return std::nullopt;
    case WM_CLOSE:
      return hidePlayer(), 0;
    default:
      return std::nullopt;
  }
}

std::optional<LRESULT> PlayerWindow::onControl(HWND at, UINT message, WPARAM wparam,
                                               LPARAM lparam) {
  const int id = GetDlgCtrlID(at);
  hot_.onMessage(at, message);
  switch (message) {
    case WM_ERASEBKGND:  // all is painted at once
      return 1;
    case WM_LBUTTONDOWN:
      useKeyboard(false);
      break;
    case WM_GETDLGCODE:  // the arrows are the volume's
      if (wparam == VK_TAB) useKeyboard(true);
      return DLGC_WANTARROWS | (id == kIdSlider1 ? 0 : DLGC_BUTTON);
    case WM_KEYDOWN:
      if (!onKey(wparam, id)) return std::nullopt;
      return 0;
    case WM_MOUSEWHEEL:
      return VolumeSlider::wheel(parts_.volume, wparam), 0;
    case WM_RBUTTONUP: {
      POINT point{GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
      ClientToScreen(at, &point);
      return mnupop(point), 0;
    }
    default:
      break;
  }
  if (id == kIdSlider1) return slider_.onControl(message, wparam, lparam);
  if (id == kIdchkSave) return onCheckBox(at, message);
  return std::nullopt;
}

bool PlayerWindow::onKey(WPARAM key, int focused) {
  if (VolumeSlider::key(parts_.volume, key)) return true;
  const bool own_use = focused >= kIdchkSave && focused != kIdSlider1;
  if (key != VK_SPACE || own_use) return false;
  actions_.toggle();
  return true;
}

void PlayerWindow::useKeyboard(bool keyboard) {
  by_keyboard_ = keyboard;
  slider_.showFocus(keyboard);
  InvalidateRect(GetFocus(), nullptr, FALSE);
}

void PlayerWindow::onCommand(int id) {
  switch (id) {
    case kIdImage1:
      return actions_.startplayer();
    case kIdImage2:
      return actions_.stopplayer();
    case kIdchkSave:
      return chkSave_Click();
    case kIdsubontop:
      return subontop_Click();
    case kIdsubmini:
      return submini_Click();
    case kIdHide:
    case IDCANCEL:  // Esc
      return hidePlayer();
    default:
      return;
  }
}

std::optional<LRESULT> PlayerWindow::onNotify(NMHDR& header) {
  if (header.code != TTN_GETDISPINFOW || !everShown()) return std::nullopt;
  auto& info = reinterpret_cast<NMTTDISPINFOW&>(header);
  if ((info.uFlags & TTF_IDISHWND) != 0) {
    const int id = GetDlgCtrlID(reinterpret_cast<HWND>(header.idFrom));
    tip_text_ = textOf(id);
    if (id == kIdchkSave && !mini_) tip_text_.clear();  // there it is written on it
  } else {
    // Labels tell only what they had to cut.
    const bool name = header.idFrom == kIdlblName;
    const int id = name                                              ? kIdlblName
                   : IsWindowVisible(control(kIdlbstation)) != FALSE ? kIdlbstation
                                                                     : kIdlblSong;
    const PlayerLayout& layout = skin_->layout();
    tip_text_ = shownText(id);
    const bool cut = skin_->isCut(name ? PlayerSkin::Label::name : PlayerSkin::Label::song,
                                  name ? layout.lblName : layout.song, tip_text_);
    if (!cut) tip_text_.clear();
  }
  info.lpszText = tip_text_.data();
  return 0;
}

void PlayerWindow::Timer1_Timer() {
  if (textOf(kIdlbstation).empty()) return showSongOrStation(false);
  const bool station_shows = IsWindowVisible(control(kIdlbstation)) != FALSE;
  showSongOrStation(!station_shows || textOf(kIdlblSong).empty());
}

void PlayerWindow::chkSave_Click() {
  actions_.recordstatus(SendMessageW(control(kIdchkSave), BM_GETCHECK, 0, 0) == BST_CHECKED);
}

void PlayerWindow::subontop_Click() {
  on_top_ = !on_top_;
  SetWindowPos(window::Window::handle(), on_top_ ? HWND_TOPMOST : HWND_NOTOPMOST, 0, 0, 0, 0,
               SWP_NOMOVE | SWP_NOSIZE);
  InvalidateRect(control(kIdsubontop), nullptr, FALSE);
}

void PlayerWindow::submini_Click() {
  mini_ = !mini_;
  dress();
  bringIntoView();
}

void PlayerWindow::onPaint() {
  const window::PaintScope paint(window::Window::handle());
  window::Canvas canvas(paint.dc(), skin_->layout().window);
  skin_->background(canvas, buffered_, playing_);
  canvas.present();
}

void PlayerWindow::onDrawItem(const DRAWITEMSTRUCT& item) {
  POINT origin{};
  MapWindowPoints(item.hwndItem, window::Window::handle(), &origin, 1);
  RECT own{};
  GetClientRect(item.hwndItem, &own);
  window::Canvas canvas(item.hDC, {own.right, own.bottom}, origin);
  skin_->background(canvas, buffered_, playing_);
  const int id = static_cast<int>(item.CtlID);
  if (isTextLabel(id)) {
    paintLabel(canvas, id);
  } else {
    const bool on = id == kIdImage1 ? playing_ : id == kIdsubontop && on_top_;
    paintButton(canvas, id, look(item.hwndItem, (item.itemState & ODS_SELECTED) != 0, on));
  }
  canvas.present();
}

POINT PlayerWindow::firstPlace() const {
  RECT work{};
  SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
  RECT own{};
  GetWindowRect(window::Window::handle(), &own);
  return {work.right - (own.right - own.left) - scale(kFromEdge),
          work.bottom - (own.bottom - own.top) - scale(kFromEdge)};
}

void PlayerWindow::moveTo(POINT place) {
  place_ = place;
  SetWindowPos(window::Window::handle(), nullptr, place.x, place.y, 0, 0,
               SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void PlayerWindow::bringIntoView() {
  const SIZE size = skin_->layout().window;
  RECT area{place_.x, place_.y, place_.x + size.cx, place_.y + size.cy};
  const HMONITOR screen = MonitorFromRect(&area, MONITOR_DEFAULTTONULL);
  if (screen == nullptr) return moveTo(firstPlace());
  MONITORINFO info{};
  info.cbSize = sizeof(info);
  GetMonitorInfoW(screen, &info);
  const RECT& work = info.rcWork;
  moveTo({std::max(std::min(area.left, work.right - size.cx), work.left),
          std::max(std::min(area.top, work.bottom - size.cy), work.top)});
}

float PlayerWindow::Left() const {
  return twips(place_.x);
}

float PlayerWindow::Top() const {
  return twips(place_.y);
}

void PlayerWindow::setLeft(float left) {
  moveTo({pixels(left), place_.y});
}

void PlayerWindow::setTop(float top) {
  moveTo({place_.x, pixels(top)});
}

}  // namespace player
