#include "player/player_window_win.h"

#include <commctrl.h>

#include "base/utf.h"
#include "player/player_ids.h"
#include "player/skinmodule_win.h"
#include "window/gdi.h"
#include "window/menu.h"

// The player window's controls: how they are made, placed, named and painted.

namespace player {
namespace {

constexpr DWORD kLabel = SS_OWNERDRAW;
constexpr int kTipWidth = 400;

/// Windows' own word for closing a window, in the user's language.
std::wstring systemCloseText(HWND window) {
  wchar_t text[64] = {};
  GetMenuStringW(GetSystemMenu(window, FALSE), SC_CLOSE, text, 64, MF_BYCOMMAND);
  std::wstring word;
  for (const wchar_t c : std::wstring_view(text)) {
    if (c == L'\t') break;
    if (c != L'&') word += c;
  }
  return word;
}

void move(HWND control, const RECT& area) {
  SetWindowPos(control, nullptr, area.left, area.top, area.right - area.left,
               area.bottom - area.top, SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace

HWND PlayerWindow::addButton(int id, DWORD style) {
  const HWND button = addControl(WC_BUTTONW, {}, style | WS_TABSTOP, id);
  hook(button);
  return button;
}

void PlayerWindow::addControls() {
  INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_BAR_CLASSES};
  InitCommonControlsEx(&classes);
  addControl(WC_STATICW, "stop", kLabel, kIdlblName);
  addControl(WC_STATICW, {}, kLabel, kIdlbstation);
  addControl(WC_STATICW, {}, kLabel, kIdlblSong);
  addControl(WC_STATICW, {}, kLabel, kIdlblBPS);
  addControl(WC_STATICW, {}, kLabel, kIdlblFormat);
  addButton(kIdImage1, BS_OWNERDRAW);
  addButton(kIdImage2, BS_OWNERDRAW);
  addButton(kIdchkSave, BS_AUTOCHECKBOX);
  const HWND trackbar = addControl(
      TRACKBAR_CLASSW, {}, TBS_HORZ | TBS_NOTICKS | TBS_FIXEDLENGTH | WS_TABSTOP, kIdSlider1);
  slider_.attach(
      trackbar, [this](window::Canvas& canvas) { skin_->background(canvas, buffered_, playing_); });
  hook(trackbar);
  addButton(kIdsubontop, BS_OWNERDRAW);
  addButton(kIdsubmini, BS_OWNERDRAW);
  addButton(kIdHide, BS_OWNERDRAW);
  showSongOrStation(false);
}

void PlayerWindow::readCaptions() {
  const auto name = [this](int id, const std::string& text) {
    const std::wstring wide = base::toWide(text);
    if (wide != textOf(id)) SetWindowTextW(control(id), wide.c_str());
  };
  name(kIdImage1, parts_.menu.subplayerplay.Caption);
  name(kIdImage2, parts_.menu.subplayerstop.Caption);
  name(kIdchkSave, parts_.menu.mnurecordstream.Caption);
  name(kIdSlider1, parts_.menu.mnuplayervolume.Caption);
  name(kIdsubontop, parts_.captions.get("frmNetRadio.subontop"));
  name(kIdsubmini, parts_.captions.get("frmNetRadio.submini"));
  SetWindowTextW(control(kIdHide), systemCloseText(handle()).c_str());
}

void PlayerWindow::addTips() {
  // Without an owner: under Wine a window with a top-most popup of its own cannot be
  // made top-most itself.
  tips_ = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr,
                          WS_POPUP | TTS_ALWAYSTIP | TTS_NOPREFIX, 0, 0, 0, 0, nullptr, nullptr,
                          window::instance(), nullptr);
  SendMessageW(tips_, TTM_SETMAXTIPWIDTH, 0, scale(kTipWidth));
  TTTOOLINFOW tool{};
  tool.cbSize = sizeof(tool);
  tool.hwnd = handle();
  tool.lpszText = LPSTR_TEXTCALLBACKW;
  tool.uFlags = TTF_SUBCLASS | TTF_IDISHWND;
  for (const int id : {kIdImage1, kIdImage2, kIdchkSave, kIdsubontop, kIdsubmini, kIdHide}) {
    tool.uId = reinterpret_cast<UINT_PTR>(control(id));
    SendMessageW(tips_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
  }
  // The labels let the pointer through to the window.
  tool.uFlags = TTF_SUBCLASS;
  for (const int id : {kIdlblName, kIdlblSong}) {
    tool.uId = static_cast<UINT_PTR>(id);
    tool.rect = id == kIdlblName ? skin_->layout().lblName : skin_->layout().song;
    SendMessageW(tips_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
  }
}

void PlayerWindow::dress() {
  skin_.emplace(dpi(), mini_);
  const PlayerLayout& layout = skin_->layout();
  const std::pair<int, const RECT*> places[] = {
      {kIdImage1, &layout.Image1},       {kIdImage2, &layout.Image2},
      {kIdlblName, &layout.lblName},     {kIdlbstation, &layout.song},
      {kIdlblSong, &layout.song},        {kIdlblBPS, &layout.lblBPS},
      {kIdlblFormat, &layout.lblFormat}, {kIdchkSave, &layout.chkSave},
      {kIdSlider1, &layout.Slider1},     {kIdsubontop, &layout.subontop},
      {kIdsubmini, &layout.submini},     {kIdHide, &layout.hide}};
  for (const auto& [id, area] : places) {
    move(control(id), *area);
    EnableWindow(control(id), IsRectEmpty(area) == FALSE);  // no focus for what is not there
  }
  slider_.setLook(skin_->theme(), layout.scale);
  applyPanel(handle(), layout.window, layout.scale);
  TTTOOLINFOW tool{};
  tool.cbSize = sizeof(tool);
  tool.hwnd = handle();
  for (const int id : {kIdlblName, kIdlblSong}) {
    tool.uId = static_cast<UINT_PTR>(id);
    tool.rect = id == kIdlblName ? layout.lblName : layout.song;
    SendMessageW(tips_, TTM_NEWTOOLRECTW, 0, reinterpret_cast<LPARAM>(&tool));
  }
  RedrawWindow(handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN);
}

std::optional<LRESULT> PlayerWindow::onCheckBox(HWND box, UINT message) {
  switch (message) {
    case WM_ERASEBKGND:
      return 1;
    case WM_PAINT:
      paintCheckBox(box);
      return 0;
    // The system's check box draws itself at these without asking.
    case BM_SETSTATE:
    case BM_SETCHECK:
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
    case WM_ENABLE:
    case WM_SETTEXT:
      InvalidateRect(box, nullptr, FALSE);
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

void PlayerWindow::paintCheckBox(HWND box) {
  const window::PaintScope paint(box);
  if (!everShown()) return;
  const RECT& area = skin_->layout().chkSave;
  window::Canvas canvas(paint.dc(), {area.right - area.left, area.bottom - area.top},
                        {area.left, area.top});
  skin_->background(canvas, buffered_, playing_);
  const bool pressed = (SendMessageW(box, BM_GETSTATE, 0, 0) & BST_PUSHED) != 0;
  skin_->record(canvas, look(box, pressed, recording_), textOf(kIdchkSave));
  canvas.present();
}

ControlLook PlayerWindow::look(HWND control, bool pressed, bool on) const {
  return {.pressed = pressed,
          .hot = hot_.is(control),
          .focus = by_keyboard_ && GetFocus() == control,
          .on = on};
}

void PlayerWindow::paintButton(window::Canvas& canvas, int id, const ControlLook& look) {
  switch (id) {
    case kIdImage1:
      return skin_->play(canvas, look);
    case kIdImage2:
      return skin_->stop(canvas, look);
    case kIdsubontop:
      return skin_->pin(canvas, look);
    case kIdsubmini:
      return skin_->mini(canvas, look);
    case kIdHide:
      return skin_->hide(canvas, look);
    default:
      return;
  }
}

void PlayerWindow::paintLabel(window::Canvas& canvas, int id) {
  const PlayerLayout& layout = skin_->layout();
  switch (id) {
    case kIdlblName:
      return skin_->label(canvas, PlayerSkin::Label::name, layout.lblName, shownText(id));
    case kIdlbstation:
    case kIdlblSong:
      return skin_->label(canvas, PlayerSkin::Label::song, layout.song, shownText(id));
    case kIdlblBPS:
      return skin_->label(canvas, PlayerSkin::Label::detail, layout.lblBPS, textOf(id));
    case kIdlblFormat:
      return skin_->label(canvas, PlayerSkin::Label::detail, layout.lblFormat, textOf(id), true);
    default:
      return;
  }
}

void PlayerWindow::mnupop(POINT at) {
  enum Line : std::size_t { kSubontop, kSubmini };
  if (at.x == -1 && at.y == -1) {  // by the keyboard
    at = {0, 0};
    ClientToScreen(handle(), &at);
  }
  window::PopupMenu menu(
      [this](int) -> std::vector<window::MenuLine> {
        return {{.caption = parts_.captions.get("frmNetRadio.subontop"), .checked = on_top_},
                {.caption = parts_.captions.get("frmNetRadio.submini"), .checked = mini_}};
      },
      0);
  pop_ = &menu;
  const auto choice = menu.track(handle(), at);
  pop_ = nullptr;
  if (!choice) return;
  if (choice->line == kSubontop)
    subontop_Click();
  else
    submini_Click();
}

}  // namespace player
