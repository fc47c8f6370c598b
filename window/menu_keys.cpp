#include "window/menu_keys.h"

#include <algorithm>
#include <cstdlib>

namespace window {
namespace {

constexpr int kLinesPerNotch = 3;

/// The selected line of a menu, -1 for none.
int selected(HMENU menu) {
  const int count = GetMenuItemCount(menu);
  for (int i = 0; i < count; ++i) {
    if ((GetMenuState(menu, static_cast<UINT>(i), MF_BYPOSITION) & MF_HILITE) != 0) return i;
  }
  return -1;
}

/// Of the thread's open menus the one that the keys go to: the last in the chain of
/// selected lines.
BOOL CALLBACK findActive(HWND window, LPARAM found) noexcept {
  const auto menu = reinterpret_cast<HMENU>(SendMessageW(window, MN_GETHMENU, 0, 0));
  const int line = menu == nullptr ? -1 : selected(menu);
  if (line < 0 || selected(GetSubMenu(menu, line)) >= 0) return TRUE;
  *reinterpret_cast<HMENU*>(found) = menu;
  return FALSE;
}

/// How far the selection can go that way before it would begin again at the other end.
int room(bool up) {
  HMENU menu = nullptr;
  EnumThreadWindows(GetCurrentThreadId(), findActive, reinterpret_cast<LPARAM>(&menu));
  if (menu == nullptr) return 1;
  return up ? selected(menu) : GetMenuItemCount(menu) - 1 - selected(menu);
}

void moveSelection(HWND target, int lines) {
  const bool up = lines < 0;
  const int steps = std::min(std::abs(lines), room(up));
  for (int i = 0; i < steps; ++i) PostMessageW(target, WM_KEYDOWN, up ? VK_UP : VK_DOWN, 0);
}

/// About a screenful.
int page() {
  return std::max(5, GetSystemMetrics(SM_CYFULLSCREEN) / GetSystemMetrics(SM_CYMENU) - 2);
}

/// Asks for a movement from within a menu's loop, by lines in WPARAM.
UINT moveMessage() {
  static const UINT message = RegisterWindowMessageW(L"KestrelMenuMove");
  return message;
}

/// True if the message has been dealt with. No key message may be posted while one is
/// looked at: the loop peeks at it first and takes away the next of its kind after
/// that, which would be ours. Hence the message between.
bool translate(const MSG& message) {
  const auto ask = [&](int lines) {
    PostMessageW(message.hwnd, moveMessage(), static_cast<WPARAM>(lines), 0);
  };
  const bool key = message.message == WM_KEYDOWN;
  if (message.message == moveMessage()) {
    moveSelection(message.hwnd, static_cast<int>(message.wParam));
  } else if (message.message == WM_MOUSEWHEEL) {
    ask(-GET_WHEEL_DELTA_WPARAM(message.wParam) * kLinesPerNotch / WHEEL_DELTA);
  } else if (key && message.wParam == VK_NEXT) {
    ask(page());
  } else if (key && message.wParam == VK_PRIOR) {
    ask(-page());
  } else {
    return false;
  }
  return true;
}

LRESULT CALLBACK filter(int code, WPARAM wparam, LPARAM lparam) noexcept {
  if (code == MSGF_MENU && translate(*reinterpret_cast<const MSG*>(lparam))) return TRUE;
  return CallNextHookEx(nullptr, code, wparam, lparam);
}

}  // namespace

MenuKeys::MenuKeys()
    : hook_(SetWindowsHookExW(WH_MSGFILTER, filter, nullptr, GetCurrentThreadId())) {}

}  // namespace window
