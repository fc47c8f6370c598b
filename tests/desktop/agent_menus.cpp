#include "agent.h"

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace desktop_test {
namespace {

BOOL CALLBACK collectPopup(HWND window, LPARAM list) {
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  if (process == GetCurrentProcessId() && IsWindowVisible(window) != FALSE &&
      className(window) == L"#32768")
    reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
  return TRUE;
}

/// How far a menu that is taller than the screen is scrolled, in pixels; an item's
/// rectangle is that of the unscrolled menu.
int scrolledBy(HWND window, HMENU menu, const RECT& popup) {
  const LONG middle = (popup.left + popup.right) / 2;
  for (LONG y = (popup.top + popup.bottom) / 2; y < popup.bottom; ++y) {
    const int found = MenuItemFromPoint(window, menu, {middle, y});
    if (found < 0 || MenuItemFromPoint(window, menu, {middle, y - 1}) == found) continue;
    RECT item{};
    GetMenuItemRect(window, menu, static_cast<UINT>(found), &item);
    return item.top - y;
  }
  return 0;
}

void writeItem(Json& json, HMENU menu, UINT position, int scrolled) {
  std::array<wchar_t, 512> text{};
  MENUITEMINFOW info{};
  info.cbSize = sizeof(info);
  info.fMask = MIIM_FTYPE | MIIM_STATE | MIIM_STRING | MIIM_SUBMENU;
  info.dwTypeData = text.data();
  info.cch = static_cast<UINT>(text.size());
  GetMenuItemInfoW(menu, position, TRUE, &info);
  RECT rect{};
  GetMenuItemRect(nullptr, menu, position, &rect);
  OffsetRect(&rect, 0, -scrolled);
  const auto is = [&](UINT state) { return (info.fState & state) != 0; };
  json.open('{')
      .fields("text", std::wstring_view(text.data()), "separator",
              (info.fType & MFT_SEPARATOR) != 0, "checked", is(MFS_CHECKED), "greyed",
              is(MFS_GRAYED | MFS_DISABLED), "lit", is(MFS_HILITE), "submenu",
              handle(info.hSubMenu), "rect", rect)
      .close('}');
}

void writePopup(Json& json, HWND window) {
  const LRESULT answer = SendMessageW(window, MN_GETHMENU, 0, 0);
  const auto menu = reinterpret_cast<HMENU>(answer);
  if (menu == nullptr) return;  // closed in the meantime
  RECT rect{};
  GetWindowRect(window, &rect);
  json.open('{').fields("menu", handle(menu), "rect", rect).key("items").open('[');
  const int count = GetMenuItemCount(menu);
  const int scrolled = scrolledBy(window, menu, rect);
  for (int i = 0; i < count; ++i) writeItem(json, menu, static_cast<UINT>(i), scrolled);
  json.close(']').close('}');
}

}  // namespace

void writePopups(Json& json) {
  std::vector<HWND> popups;
  EnumWindows(collectPopup, reinterpret_cast<LPARAM>(&popups));
  std::reverse(popups.begin(), popups.end());  // from the lowest up
  json.open('[');
  for (const HWND popup : popups) writePopup(json, popup);
  json.close(']');
}

}  // namespace desktop_test
