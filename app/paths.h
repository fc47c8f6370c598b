#pragma once

#include <string>
#include <string_view>

namespace app {

/// Where the program's files are. Both folders without a trailing backslash.
struct Paths {
  std::string datapath;        ///< the user's own files; the only place that is written
  std::string program_folder;  ///< read-only fallback

  /// `relative` ("\data\favs.dat") in the data folder or, if it is only there, in
  /// the program's; empty when it is in neither.
  [[nodiscard]] std::string find(std::string_view relative) const;
  [[nodiscard]] std::string inData(std::string_view relative) const;
};

/// The data folder below the user's application data folder, made with its
/// subfolders on the very first start only.
[[nodiscard]] Paths makePaths(std::string_view appdata, std::string_view program_folder);

}  // namespace app
