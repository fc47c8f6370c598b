#pragma once

#include <windows.h>

#include <string>

#include "app/desktop.h"

namespace app {

/// The user's desktop through the Windows shell.
class DesktopWin final : public Desktop {
 public:
  void messageBox(std::string_view text, std::string_view title = {},
                  Icon icon = Icon::none) override;
  void shellopen(std::string_view target) override;
  [[nodiscard]] bool isDangerousExtension(std::string_view dotted_extension) override;
  void beep() override;
};

/// Path of a special folder (CSIDL_APPDATA, ...) in UTF-8, without a backslash at
/// its end; empty where the system has none.
std::string specialfolder(int csidl);

/// Folder of the executable in UTF-8, without a backslash at its end.
std::string programFolder();

}  // namespace app
