#include "window/menu.h"

#include <algorithm>
#include <utility>

#include "base/utf.h"
#include "window/gdi.h"
#include "window/menu_keys.h"

namespace window {
namespace {

void removeAll(HMENU menu) {
  // RemoveMenu leaves the submenus alive: they are owned by their own levels.
  // From the end, or the system moves all others up each time.
  for (int last = GetMenuItemCount(menu) - 1; last >= 0; --last) {
    RemoveMenu(menu, static_cast<UINT>(last), MF_BYPOSITION);
  }
}

/// How many of the text's first units fit, without splitting a surrogate pair.
std::size_t fitting(const std::wstring& text, int max_pixels) {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof(metrics);
  SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0);
  const base::UniqueFont font(CreateFontIndirectW(&metrics.lfMenuFont));
  const WindowDc screen(nullptr);
  const SelectScope selected(screen.get(), font.get());
  int count = 0;
  SIZE size{};
  // The system refuses texts of more units than a 16-bit length holds.
  const int length = static_cast<int>(std::min<std::size_t>(text.size(), 4096));
  GetTextExtentExPointW(screen.get(), text.c_str(), length, max_pixels, &count, nullptr, &size);
  if (count > 0 && IS_HIGH_SURROGATE(text[static_cast<std::size_t>(count) - 1])) --count;
  return static_cast<std::size_t>(count);
}

std::wstring doubleAmpersands(const std::wstring& text) {
  std::wstring shown;
  shown.reserve(text.size() + 4);
  for (const wchar_t c : text) {
    shown += c;
    if (c == L'&') shown += c;
  }
  return shown;
}

}  // namespace

std::wstring menuText(const MenuLine& line, int max_pixels) {
  std::wstring text = base::toWide(line.caption);
  std::replace_if(
      text.begin(), text.end(), [](wchar_t c) { return c < 0x20 || c == 0x7F; }, L' ');
  constexpr std::size_t kSurelyShort = 60;
  if (text.size() > kSurelyShort) {
    const std::size_t fit = fitting(text, max_pixels);
    if (fit < text.size()) text = text.substr(0, fit) + L"\u2026";
  }
  return doubleAmpersands(text);
}

PopupMenu::PopupMenu(Content content, int root_key) : content_(std::move(content)) {
  level(root_key);
}

PopupMenu::~PopupMenu() {
  for (Level& each : levels_) removeAll(each.menu.get());
}

PopupMenu::Level& PopupMenu::level(int key) {
  const auto found =
      std::find_if(levels_.begin(), levels_.end(), [&](const Level& l) { return l.key == key; });
  if (found != levels_.end()) return *found;
  return levels_.emplace_back(Level{base::UniqueMenu(CreatePopupMenu()), key});
}

void PopupMenu::opening(HMENU menu) {
  const auto found = std::find_if(levels_.begin(), levels_.end(),
                                  [&](const Level& l) { return l.menu.get() == menu; });
  if (found != levels_.end()) fill(*found);
}

void PopupMenu::fill(Level& level) {
  const std::vector<MenuLine> lines = content_(level.key);
  const auto count = static_cast<UINT>(lines.size());
  removeAll(level.menu.get());
  // A block of ids per popup, used again when it opens again: ids have 16 bits.
  if (count > level.ids) {
    level.first_id = next_id_;
    level.ids = count;
    next_id_ += count;
  }
  const int max_pixels = GetSystemMetrics(SM_CXSCREEN) / 2;  // asking takes its time
  for (UINT i = 0; i < count; ++i) insert(level, i, lines[i], max_pixels);
}

void PopupMenu::insert(Level& owner, UINT position, const MenuLine& line, int max_pixels) {
  MENUITEMINFOW item{};
  item.cbSize = sizeof(item);
  item.fMask = MIIM_FTYPE | MIIM_STATE | MIIM_ID;
  item.fType = line.separator ? MFT_SEPARATOR : MFT_STRING;
  item.fState =
      (line.checked ? MFS_CHECKED : MFS_UNCHECKED) | (line.enabled ? MFS_ENABLED : MFS_GRAYED);
  item.wID = owner.first_id + position;
  std::wstring text;
  if (!line.separator) {
    text = menuText(line, max_pixels);
    item.fMask |= MIIM_STRING;
    item.dwTypeData = text.data();
  }
  if (line.submenu >= 0) {
    item.fMask |= MIIM_SUBMENU;
    item.hSubMenu = level(line.submenu).menu.get();
  }
  InsertMenuItemW(owner.menu.get(), position, TRUE, &item);
}

std::optional<PopupMenu::Choice> PopupMenu::track(HWND owner, POINT at) {
  const MenuKeys keys;
  // Without the foreground the menu would not close when the user clicks elsewhere;
  // without the message after it, it would not open again at once.
  SetForegroundWindow(owner);
  const auto id = static_cast<UINT>(
      TrackPopupMenuEx(levels_.front().menu.get(), TPM_RETURNCMD, at.x, at.y, owner, nullptr));
  PostMessageW(owner, WM_NULL, 0, 0);
  if (id == 0) return std::nullopt;
  for (const Level& each : levels_) {
    if (id >= each.first_id && id - each.first_id < each.ids) {
      return Choice{each.key, id - each.first_id};
    }
  }
  return std::nullopt;
}

}  // namespace window
