#include "directory/own_lists.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>

#include "directory/station_lists.h"

namespace directory {
namespace {

using menu::MenuItem;

int firstOwn(OwnList list) {
  return list == OwnList::favourites ? kFirstFavourite : 0;
}

// Entry 0 of an empty list of own entries stands for nothing.
bool isOwn(OwnList list, const MenuItem& item) {
  return list == OwnList::favourites || !item.Tag.empty();
}

using Key = std::pair<std::string_view, std::string_view>;

Key keyOf(const OwnEntry& entry) {
  return {entry.title, entry.url};
}

// The menu's entries, each to be taken once: equal ones in their order.
class Entries {
 public:
  explicit Entries(const std::vector<MenuItem>& items) : items_(items), taken_(items.size()) {
    for (std::size_t i = 0; i < items.size(); ++i) {
      places_.emplace(Key{items[i].Caption, items[i].Tag}, i);
    }
  }
  const MenuItem* take(const OwnEntry& entry) {
    const auto at = places_.find(keyOf(entry));
    if (at == places_.end()) return nullptr;
    const std::size_t place = at->second;
    places_.erase(at);
    taken_[place] = true;
    return &items_[place];
  }
  void appendRest(std::vector<MenuItem>& to) const {
    for (std::size_t i = 0; i < items_.size(); ++i) {
      if (!taken_[i]) to.push_back(items_[i]);
    }
  }

 private:
  const std::vector<MenuItem>& items_;
  std::vector<bool> taken_;
  std::multimap<Key, std::size_t> places_;
};

}  // namespace

std::vector<OwnEntry> organise(const menu::MenuTree& tree, OwnList list) {
  const menu::MenuArray& menu = list == OwnList::favourites ? tree.subfavs : tree.subspecial;
  std::vector<OwnEntry> rows;
  for (int i = firstOwn(list); i <= menu.UBound(); ++i) {
    if (isOwn(list, menu[i])) rows.push_back({menu[i].Caption, menu[i].Tag});
  }
  return rows;
}

void reorganise(menu::MenuTree& tree, OwnList list, const std::vector<OwnEntry>& before,
                const std::vector<OwnEntry>& after) {
  menu::MenuArray& menu = list == OwnList::favourites ? tree.subfavs : tree.subspecial;
  std::vector<MenuItem> now;
  for (int i = firstOwn(list); i <= menu.UBound(); ++i) {
    if (isOwn(list, menu[i])) now.push_back(menu[i]);
  }

  std::vector<MenuItem> kept;
  Entries menu_entries(now);
  std::map<Key, int> left;
  for (const OwnEntry& row : after) {
    ++left[keyOf(row)];
    if (const MenuItem* item = menu_entries.take(row)) kept.push_back(*item);
  }
  for (const OwnEntry& row : before) {
    if (left[keyOf(row)]-- <= 0) menu_entries.take(row);
  }
  menu_entries.appendRest(kept);

  if (list == OwnList::specials && kept.empty()) kept.push_back(emptySpecials());
  menu.unloadAbove(std::max(firstOwn(list) - 1, 0));
  const bool replaces_first = firstOwn(list) == 0;
  for (std::size_t i = 0; i < kept.size(); ++i) {
    (i == 0 && replaces_first ? menu[0] : menu.load()) = std::move(kept[i]);
  }
}

}  // namespace directory
