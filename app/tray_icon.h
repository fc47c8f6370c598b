#pragma once

#include <string_view>

namespace app {

/// The icon in the notification area as the logic sees it. User-interface thread.
class TrayIcon {
 public:
  virtual ~TrayIcon() = default;

  /// Shows the working or the normal picture, with the present tooltip.
  virtual void workicon() = 0;
  virtual void normalicon() = 0;

  /// The main window's caption, which is the tooltip from the next workicon() or
  /// normalicon() on.
  virtual void setCaption(std::string_view text) = 0;
};

}  // namespace app
