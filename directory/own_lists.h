#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "menu/menu_tree.h"

namespace directory {

/// A row of a list of the user's own: a favourite or an own entry.
struct OwnEntry {
  std::string title;
  std::string url;
  friend bool operator==(const OwnEntry&, const OwnEntry&) = default;
};

/// Whether the entry's dialog may be confirmed. Anything may be typed otherwise.
[[nodiscard]] inline bool isComplete(std::string_view title, std::string_view url) {
  return !title.empty() && !url.empty();
}

enum class OwnList { favourites, specials };

/// What the organiser shows when it opens.
[[nodiscard]] std::vector<OwnEntry> organise(const menu::MenuTree& tree, OwnList list);

/// Makes the menu what the organiser made of it: it opened with `before`, and
/// `after` is left of that, in any order. The menu lived on meanwhile: what was
/// added to it stays, at its end, and what has left it does not come back.
void reorganise(menu::MenuTree& tree, OwnList list, const std::vector<OwnEntry>& before,
                const std::vector<OwnEntry>& after);

}  // namespace directory
