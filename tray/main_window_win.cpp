#include "tray/main_window_win.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "res/resource.h"
#include "tray/tray_icon_win.h"

namespace tray {
namespace {

using Kind = menu::Popup::Kind;

constexpr int kPopupKeys = (static_cast<int>(Kind::substream) + 1) * menu::kGenres;

int keyOf(const menu::Popup& popup) {
  return static_cast<int>(popup.kind) * menu::kGenres + popup.genre;
}

menu::Popup popupOf(int key) {
  return {static_cast<Kind>(key / menu::kGenres), key % menu::kGenres};
}

window::MenuLine menuLine(const menu::Line& line) {
  return {.caption = line.item->Caption,
          .separator = line.item->isSeparator(),
          .checked = line.item->Checked,
          .enabled = line.item->Enabled,
          .submenu = line.submenu == nullptr ? -1 : keyOf(*line.submenu)};
}

bool sameControl(const menu::Click& a, const menu::Click& b) {
  return a.control == b.control && a.index == b.index && a.genre == b.genre;
}

/// How the icon's mouse messages reach the window while a menu is open.
UINT iconMouseInMenu() {
  static const UINT message = RegisterWindowMessageW(L"KestrelIconMouseInMenu");
  return message;
}

/// The icon's message has the number of a mouse movement: an open menu's loop would
/// take it for one and swallow it.
LRESULT CALLBACK iconMouseFilter(int code, WPARAM wparam, LPARAM lparam) noexcept {
  const MSG& message = *reinterpret_cast<const MSG*>(lparam);
  const bool from_icon = code == MSGF_MENU && message.message == tray::TrayIconWin::kMessage &&
                         message.wParam == tray::TrayIconWin::kId && HIWORD(message.lParam) == 0;
  if (!from_icon) return CallNextHookEx(nullptr, code, wparam, lparam);
  PostMessageW(message.hwnd, iconMouseInMenu(), 0, message.lParam);
  return TRUE;
}

using UniqueHook = base::UniqueHandle<HHOOK, UnhookWindowsHookEx>;

struct Waiting {
  HWND dialog = nullptr;  ///< belongs to another window, as all dialogs do
  HWND other = nullptr;   ///< a message box of the start, say
};

BOOL CALLBACK findUsable(HWND window, LPARAM found) noexcept {
  if (IsWindowVisible(window) == FALSE || IsWindowEnabled(window) == FALSE) return TRUE;
  auto& waiting = *reinterpret_cast<Waiting*>(found);
  if (waiting.other == nullptr) waiting.other = window;
  if (GetWindow(window, GW_OWNER) == nullptr) return TRUE;
  waiting.dialog = window;
  return FALSE;
}

}  // namespace

void Form1::showWaitingDialog() {
  Waiting waiting;
  EnumThreadWindows(GetCurrentThreadId(), findUsable, reinterpret_cast<LPARAM>(&waiting));
  const HWND front = waiting.dialog != nullptr ? waiting.dialog : waiting.other;
  if (front != nullptr) SetForegroundWindow(front);
}

Form1::Form1(menu::MenuTree& tree, Form1Events events)
    : tree_(tree),
      events_(std::move(events)),
      taskbar_created_(RegisterWindowMessageW(L"TaskbarCreated")),
      shown_(kPopupKeys) {
  create({.class_name = L"KestrelForm1", .caption = kCaption, .icon = IDI_NORMAL});
}

Form1::~Form1() {
  destroy();
}

std::optional<LRESULT> Form1::onMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == iconMouseInMenu()) {
    onIconMouse(static_cast<UINT>(lparam));
    return 0;
  }
  if (message == taskbar_created_) {
    events_.taskbar_created();
    return 0;
  }
  switch (message) {
    case tray::TrayIconWin::kMessage:
      onIconMouse(static_cast<UINT>(lparam));
      return 0;
    case WM_INITMENUPOPUP:
      if (open_ != nullptr) open_->opening(reinterpret_cast<HMENU>(wparam));
      return 0;
    case WM_QUERYENDSESSION:
      return TRUE;
    case WM_ENDSESSION:
      if (wparam != FALSE) shutDown();
      return 0;
    case WM_CLOSE:
      shutDown();
      return 0;
    default:
      return std::nullopt;
  }
}

void Form1::onIconMouse(UINT mouse_message) {
  tree_.genremenu.Visible = true;
  tree_.mnuplayer.Visible = true;
  const bool left = mouse_message == WM_LBUTTONUP;
  if (!left && mouse_message != WM_RBUTTONUP) return;
  if (IsWindowEnabled(handle()) == FALSE) return showWaitingDialog();
  SetForegroundWindow(handle());
  if (open_ != nullptr) {  // first that one ends, then this comes again
    waiting_mouse_ = mouse_message;
    EndMenu();
    return;
  }
  if (const auto popup = popupFor(events_.mouse_action(left))) popupMenu(*popup);
}

std::optional<menu::Popup> Form1::popupFor(int mouse_action) {
  switch (mouse_action) {
    case 0:
      return menu::Popup{Kind::mainmenu};
    case 1:
      return menu::Popup{Kind::genremenu};
    case 2:
      return menu::Popup{Kind::mnuplayer};
    default:
      return std::nullopt;
  }
}

void Form1::popupMenu(const menu::Popup& root) {
  window::PopupMenu menu([this](int key) { return linesOf(key); }, keyOf(root));
  const UniqueHook filter(
      SetWindowsHookExW(WH_MSGFILTER, iconMouseFilter, nullptr, GetCurrentThreadId()));
  POINT pointer{};
  GetCursorPos(&pointer);
  open_ = &menu;
  const auto choice = menu.track(handle(), pointer);
  open_ = nullptr;
  if (const UINT again = std::exchange(waiting_mouse_, 0); again != 0) {
    PostMessageW(handle(), tray::TrayIconWin::kMessage, tray::TrayIconWin::kId,
                 static_cast<LPARAM>(again));
  }
  if (choice) click(popupOf(choice->key), choice->line);
}

std::vector<window::MenuLine> Form1::linesOf(int key) {
  const menu::Popup popup = popupOf(key);
  if (popup.kind == Kind::stations) events_.genre_opened(popup.genre);
  const std::vector<menu::Line> lines = tree_.lines(popup);
  auto& shown = shown_[static_cast<std::size_t>(key)];
  shown.clear();
  std::vector<window::MenuLine> result;
  result.reserve(lines.size());
  for (const menu::Line& line : lines) {
    shown.push_back({line.click, line.item->Caption});
    result.push_back(menuLine(line));
  }
  return result;
}

void Form1::click(const menu::Popup& popup, std::size_t line) {
  const Shown shown = shown_[static_cast<std::size_t>(keyOf(popup))].at(line);
  for (auto& list : shown_) list = {};
  // A list may have been loaded anew while its menu was open: what is no longer
  // there cannot be meant.
  const auto lines = tree_.lines(popup);
  const bool still_there = std::any_of(lines.begin(), lines.end(), [&](const menu::Line& now) {
    return sameControl(now.click, shown.click) && now.item->Caption == shown.caption &&
           now.item->Enabled;
  });
  if (still_there) events_.clicked(shown.click);
}

void Form1::shutDown() {
  if (open_ != nullptr) EndMenu();
  // Taken out first: it happens once, and may end this object.
  if (auto shut_down = std::exchange(events_.shut_down, nullptr)) shut_down();
}

}  // namespace tray
