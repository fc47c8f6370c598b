#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "app/paths.h"
#include "app/settings.h"

namespace app {

/// What the start finds out before there is a window.
struct Startup {
  Paths paths;
  bool firstrun = false;  ///< there is no settings file in either folder
  Settings settings;      ///< the early ones read, the others at their defaults
  /// Text of the splash window from the language file, if that has one.
  std::optional<std::string> splash_message;
};

/// Makes the data folder, reads the early settings and looks for the language
/// file, which is copied to the data folder when it is only in the program's.
[[nodiscard]] Startup prepareStartup(std::string_view appdata, std::string_view program_folder);

}  // namespace app
