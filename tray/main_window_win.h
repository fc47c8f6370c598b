#pragma once

#include <windows.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "menu/menu_tree.h"
#include "window/menu.h"
#include "window/window.h"

namespace tray {

/// What the main window reports; all on the user-interface thread.
struct Form1Events {
  /// The `leftmouse` (true) or `rightmouse` setting: which popup opens.
  std::function<int(bool left)> mouse_action;
  /// The station menu of this genre opens (`mgenre_Click`).
  std::function<void(int genre)> genre_opened;
  /// A menu entry was clicked; the menu has closed. May run messages of its own, so
  /// another click can come before it returns.
  std::function<void(const menu::Click&)> clicked;
  /// The taskbar is new and has no icon of ours.
  std::function<void()> taskbar_created;
  /// The window was asked to close, or Windows ends the session: once, and everything
  /// must be written when it returns. It may destroy the Form1 only if that did not
  /// happen from within one of the other events.
  std::function<void()> shut_down;
};

/// The hidden main window: owner of the tray icon, of the popup menus and, as a
/// top-level window, receiver of the system's broadcasts.
class Form1 final : public window::Window {
 public:
  /// Its caption until a tooltip says otherwise.
  static constexpr const char* kCaption = "Kestrel";

  /// The tree outlives this.
  Form1(menu::MenuTree& tree, Form1Events events);
  ~Form1() override;

  /// Leads the user to the dialog or message box that waits for an answer.
  static void showWaitingDialog();

 private:
  /// The popups that a mouse action of the settings can choose.
  static std::optional<menu::Popup> popupFor(int mouse_action);

  std::optional<LRESULT> onMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  void onIconMouse(UINT mouse_message);
  void popupMenu(const menu::Popup& root);
  std::vector<window::MenuLine> linesOf(int key);
  void click(const menu::Popup& popup, std::size_t line);
  void shutDown();

  /// A line as it was shown: the tree may have changed when it is clicked.
  struct Shown {
    menu::Click click;
    std::string caption;
  };

  menu::MenuTree& tree_;
  Form1Events events_;
  const UINT taskbar_created_;
  window::PopupMenu* open_ = nullptr;      ///< while one is open
  std::vector<std::vector<Shown>> shown_;  ///< by popup key, of the open menu
  UINT waiting_mouse_ = 0;  ///< the icon's mouse message that came while one was open
};

}  // namespace tray
