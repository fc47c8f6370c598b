#pragma once

#include <windows.h>

#include <functional>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "base/unique_handle_win.h"

namespace window {

/// One line of a popup menu.
struct MenuLine {
  std::string caption;  ///< 8-bit; tabs and line ends show as blanks
  bool separator = false;
  bool checked = false;
  bool enabled = true;
  int submenu = -1;  ///< key of the popup behind this line, or -1
};

/// A native popup menu made of lines that are asked for only when it opens, as are
/// those of its submenus. Popups are told apart by keys that their owner gives.
/// User-interface thread; the menus go with the object.
class PopupMenu {
 public:
  /// Gives the lines of a popup, each time it opens.
  using Content = std::function<std::vector<MenuLine>(int key)>;

  /// A line by its place in what Content gave last.
  struct Choice {
    int key;
    std::size_t line;
  };

  PopupMenu(Content content, int root_key);
  ~PopupMenu();
  PopupMenu(const PopupMenu&) = delete;
  PopupMenu& operator=(const PopupMenu&) = delete;

  /// Shows the menu and returns when it has closed, with the line clicked. `owner`
  /// comes to the foreground and must hand its WM_INITMENUPOPUP to opening().
  std::optional<Choice> track(HWND owner, POINT at);

  /// Fills a menu of this object; others are left alone.
  void opening(HMENU menu);

 private:
  struct Level {
    base::UniqueMenu menu;
    int key;
    UINT first_id = 0;
    UINT ids = 0;
  };

  Level& level(int key);
  void fill(Level& level);
  void insert(Level& level, UINT position, const MenuLine& line, int max_pixels);

  Content content_;
  std::list<Level> levels_;  // addresses stay; the first is the root
  UINT next_id_ = 1;
};

/// A caption as a menu shows it: "&" doubled, for it marks no letter here, control
/// characters blank, cut to `max_pixels` in the menu font.
std::wstring menuText(const MenuLine& line, int max_pixels);

}  // namespace window
