#pragma once

#include <string>
#include <string_view>

namespace player {

/// `text` without the characters : / \ ? * | < > and the double quote.
[[nodiscard]] std::string CleanFileName(std::string_view text);

/// Full path of the recording of `title` in `folder` (no trailing backslash). Titles
/// come from strangers: empty where nothing is left of one, and where the file would
/// have the name of a device or control characters in it. Such a title is not recorded,
/// and no more is one that is too long for the file system.
[[nodiscard]] std::string recordPath(std::string_view folder, std::string_view title);

}  // namespace player
