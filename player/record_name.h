#pragma once

#include <string>
#include <string_view>

namespace player {

/// `text` without the characters : / \ ? * | < > and the double quote.
[[nodiscard]] std::string CleanFileName(std::string_view text);

/// Full path of the recording of `title` in `folder` (no trailing backslash).
/// Titles come from strangers: control characters go, the names of devices get an
/// underscore before them, a long title is cut between two characters so that the
/// path stays within what Windows takes. Empty if nothing is left of the title.
[[nodiscard]] std::string recordPath(std::string_view folder, std::string_view title);

}  // namespace player
