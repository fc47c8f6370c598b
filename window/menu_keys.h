#pragma once

#include <windows.h>

#include "base/unique_handle_win.h"

namespace window {

/// While it lives, the mouse wheel and Page Up/Down move the selection of an open
/// menu by several lines, which native menus do not do by themselves: what makes a
/// menu of 500 lines bearable. One at a time per thread.
class MenuKeys {
 public:
  MenuKeys();

 private:
  base::UniqueHandle<HHOOK, UnhookWindowsHookEx> hook_;
};

}  // namespace window
