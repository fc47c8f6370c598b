#pragma once

#include <windows.h>

#include <string_view>

#include "app/desktop.h"

namespace program {

/// The user's desktop through the Windows shell.
class DesktopWin final : public app::Desktop {
 public:
  void messageBox(std::string_view text, std::string_view title = {},
                  Icon icon = Icon::none) override;
  void shellopen(std::string_view target) override;
  [[nodiscard]] bool isDangerousExtension(std::string_view dotted_extension) override;
  void beep() override;
};

}  // namespace program
