#pragma once

#include <string_view>
#include <vector>

namespace directory {

/// A station as a page of the directory names it: views into the page, nothing
/// decoded or trimmed.
struct PageStation {
  std::string_view title;
  std::string_view link;  ///< follows the directory's host; never empty by itself
};

/// The stations of a page in its order; none when the page has no marker. One
/// pass, linear in the page whatever is in it. In a broken page a station whose
/// link or title cannot be found takes over the previous one's, as the program
/// always did (empty for the first).
[[nodiscard]] std::vector<PageStation> scanPage(std::string_view page);

}  // namespace directory
