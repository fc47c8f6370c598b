#include "menu/menu_tree.h"

#include <string>

#include "menu/genres.h"

namespace menu {
namespace {

static_assert(kGenreTable.size() == kGenres);

const MenuItem kSeparator = {"-", {}};

MenuItem entry(std::string_view caption, std::string_view tag = {}) {
  return {std::string(caption), std::string(tag)};
}

MenuItem hidden(MenuItem item) {
  item.Visible = false;
  return item;
}

std::vector<MenuItem> genreEntries() {
  std::vector<MenuItem> entries;
  entries.reserve(kGenreTable.size());
  for (const auto& genre : kGenreTable) entries.push_back(entry(genre.caption, genre.key));
  return entries;
}

std::vector<MenuItem> bitrateEntries() {
  std::vector<MenuItem> entries;
  entries.reserve(kBitrateTable.size());
  for (const auto& bitrate : kBitrateTable) entries.push_back(entry(bitrate.caption));
  entries.front().Checked = true;
  return entries;
}

std::vector<MenuArray> stationMenus() {
  std::vector<MenuArray> menus(kGenres - 1, MenuArray({entry("Reload", "reload")}));
  menus.push_back(MenuArray({entry("New Search", "search")}));
  return menus;
}

// Where a line with a submenu leads. Lines point here, so the places are fixed.
constexpr Popup kGenremenu{Popup::Kind::genremenu};
constexpr Popup kMnubitrate{Popup::Kind::mnubitrate};
constexpr Popup kMnuplayer{Popup::Kind::mnuplayer};
constexpr Popup kSubspecial{Popup::Kind::subspecial};
constexpr Popup kSubfavs{Popup::Kind::subfavs};
constexpr Popup kSubstream{Popup::Kind::substream};
constexpr auto kStations = [] {
  std::array<Popup, kGenres> popups{};
  for (int i = 0; i < kGenres; ++i) {
    popups[static_cast<std::size_t>(i)] = {Popup::Kind::stations, i};
  }
  return popups;
}();

// Collects the visible lines of a menu whose entries can be hidden: a separator
// only between two of them.
class LineList {
 public:
  void add(const MenuItem& item, Click click, const Popup* submenu = nullptr) {
    if (!item.Visible) return;
    if (item.isSeparator()) {
      if (!lines_.empty()) separator_ = &item;
      return;
    }
    if (separator_ != nullptr) lines_.push_back({separator_, {Control::separator}});
    separator_ = nullptr;
    lines_.push_back({&item, click, submenu});
  }

  // A control array shows whatever it holds.
  void add(const MenuArray& array, Control control, int genre = 0) {
    lines_.reserve(static_cast<std::size_t>(array.UBound()) + 1);
    for (int i = 0; i <= array.UBound(); ++i) {
      const bool separator = array[i].isSeparator();
      const Click click{separator ? Control::separator : control, i, genre};
      if (array[i].Visible) lines_.push_back({&array[i], click});
    }
  }

  std::vector<Line> take() { return std::move(lines_); }

 private:
  std::vector<Line> lines_;
  const MenuItem* separator_ = nullptr;
};

void addMainmenu(const MenuTree& tree, LineList& list) {
  list.add(tree.genremenu, {Control::genremenu}, &kGenremenu);
  list.add(tree.mnubitrate, {Control::mnubitrate}, &kMnubitrate);
  list.add(tree.ptrenn, {Control::separator});
  list.add(tree.mnuplayer, {Control::mnuplayer}, &kMnuplayer);
  list.add(tree.trenn3, {Control::separator});
  list.add(tree.mnusetup, {Control::mnusetup});
  list.add(tree.trenn1, {Control::separator});
  list.add(tree.mnuabout, {Control::mnuabout});
  list.add(tree.trenxx, {Control::separator});
  list.add(tree.mnuquit, {Control::mnuquit});
}

void addGenremenu(const MenuTree& tree, LineList& list) {
  for (int i = 0; i < kGenres; ++i) {
    list.add(tree.mgenre[i], {Control::mgenre, i, i}, &kStations[static_cast<std::size_t>(i)]);
  }
  list.add(tree.specialtrenner, {Control::separator});
  list.add(tree.mgenrespecial, {Control::mgenrespecial}, &kSubspecial);
  list.add(tree.trenn4favs, {Control::separator});
  list.add(tree.mgenrefavs, {Control::mgenrefavs}, &kSubfavs);
  list.add(tree.mgenretrenner, {Control::separator});
  list.add(tree.mgenreall, {Control::mgenreall});
}

void addMnuplayer(const MenuTree& tree, LineList& list) {
  list.add(tree.subplayerplay, {Control::subplayerplay});
  list.add(tree.subplayerstop, {Control::subplayerstop});
  list.add(tree.mnurecordstream, {Control::mnurecordstream});
  list.add(tree.playertrenner, {Control::separator});
  list.add(tree.mnuplayervolume, {Control::mnuplayervolume});
  list.add(tree.ptrenner2, {Control::separator});
  list.add(tree.mnuplayerwindow, {Control::mnuplayerwindow});
  list.add(tree.subplayerstream, {Control::subplayerstream}, &kSubstream);
}

}  // namespace

MenuTree::MenuTree()
    : mainmenu(entry("Menu")),
      genremenu(entry("Genres")),
      specialtrenner(hidden(kSeparator)),
      mgenrespecial(hidden(entry("Own"))),
      trenn4favs(kSeparator),
      mgenrefavs(entry("Favorites")),
      mgenretrenner(kSeparator),
      mgenreall(entry("Reload all")),
      mnubitrate(entry("Bandwidth")),
      ptrenn(kSeparator),
      mnuplayer(entry("Player")),
      trenn3(kSeparator),
      mnusetup(entry("Settings")),
      trenn1(kSeparator),
      mnuabout(entry("About")),
      trenxx(kSeparator),
      mnuquit(entry("Quit")),
      subplayerplay(entry("Play")),
      subplayerstop(entry("Stop")),
      mnurecordstream(hidden(entry("Record"))),
      playertrenner(kSeparator),
      mnuplayervolume(entry("Volume")),
      ptrenner2(kSeparator),
      mnuplayerwindow(entry("Open Window")),
      subplayerstream(hidden(entry("Select Stream"))),
      mgenre(genreEntries()),
      subspecial({entry("leer")}),
      subfavs({entry("Add Actual Selection"), entry("Organize Favorites"), kSeparator}),
      subbit(bitrateEntries()),
      substream({entry("stream 1")}),
      subgenres_(stationMenus()) {}

std::vector<Line> MenuTree::lines(const Popup& popup) const {
  LineList list;
  switch (popup.kind) {
    case Popup::Kind::mainmenu:
      addMainmenu(*this, list);
      break;
    case Popup::Kind::genremenu:
      addGenremenu(*this, list);
      break;
    case Popup::Kind::mnuplayer:
      addMnuplayer(*this, list);
      break;
    case Popup::Kind::mnubitrate:
      list.add(subbit, Control::subbit);
      break;
    case Popup::Kind::stations:
      list.add(subgenre(popup.genre), Control::subgenre, popup.genre);
      break;
    case Popup::Kind::subspecial:
      list.add(subspecial, Control::subspecial);
      break;
    case Popup::Kind::subfavs:
      list.add(subfavs, Control::subfavs);
      break;
    case Popup::Kind::substream:
      list.add(substream, Control::substream);
      break;
  }
  return list.take();
}

}  // namespace menu
