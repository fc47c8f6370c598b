#include "tray/station_menus.h"

#include <utility>

namespace tray {
namespace {

using directory::Query;

constexpr std::string_view kSearchTag = "search";
constexpr std::string_view kSearchCancelled = "-";

const menu::MenuItem* entryOf(const menu::MenuArray& array, int index) {
  return index >= 0 && index <= array.UBound() ? &array[index] : nullptr;
}

void uncheck(menu::MenuArray& array) {
  for (menu::MenuItem& item : array) item.Checked = false;
}

// The entry that was clicked may have moved, or gone, while a transfer waited.
void checkEntry(menu::MenuArray& menu, int index, const std::string& tag) {
  if (index <= menu.UBound() && menu[index].Tag == tag) {
    menu[index].Checked = true;
    return;
  }
  for (menu::MenuItem& item : menu) {
    if (item.Tag != tag) continue;
    item.Checked = true;
    return;
  }
}

}  // namespace

const menu::MenuItem* StationMenus::itemOf(const menu::Click& click) const {
  switch (click.control) {
    case menu::Control::mgenre:
      return entryOf(tree_.mgenre, click.index);
    case menu::Control::subgenre:
      if (click.genre < 0 || click.genre >= menu::kGenres) return nullptr;
      return entryOf(tree_.subgenre(click.genre), click.index);
    case menu::Control::mgenreall:
      return &tree_.mgenreall;
    case menu::Control::subspecial:
      return entryOf(tree_.subspecial, click.index);
    case menu::Control::subfavs:
      return entryOf(tree_.subfavs, click.index);
    case menu::Control::subbit:
      return entryOf(tree_.subbit, click.index);
    case menu::Control::substream:
      return entryOf(tree_.substream, click.index);
    case menu::Control::subplayerplay:
      return &tree_.subplayerplay;
    case menu::Control::subplayerstop:
      return &tree_.subplayerstop;
    case menu::Control::mnurecordstream:
      return &tree_.mnurecordstream;
    case menu::Control::mnuplayervolume:
      return &tree_.mnuplayervolume;
    case menu::Control::mnuplayerwindow:
      return &tree_.mnuplayerwindow;
    case menu::Control::mnusetup:
      return &tree_.mnusetup;
    case menu::Control::mnuabout:
      return &tree_.mnuabout;
    case menu::Control::mnuquit:
      return &tree_.mnuquit;
    default:
      return nullptr;  // leads to a submenu, or to a window that is still to come
  }
}

void StationMenus::click(const menu::Click& click) {
  const menu::MenuItem* item = itemOf(click);
  if (item == nullptr || !item->Visible || !item->Enabled || item->isSeparator()) return;
  switch (click.control) {
    case menu::Control::mgenre:
      return mgenre_Click(click.index);
    case menu::Control::subgenre:
      return subgenre_Click(click.genre, click.index);
    case menu::Control::mgenreall:
      return actions_.mgenreall_Click();
    case menu::Control::subspecial:
      return subspecial_Click(click.index);
    case menu::Control::subfavs:
      return subfavs_Click(click.index);
    case menu::Control::subbit:
      return subbit_Click(click.index);
    case menu::Control::substream:
      return substream_Click(click.index);
    case menu::Control::subplayerplay:
      return actions_.startplayer(0);
    case menu::Control::subplayerstop:
      return actions_.stopplayer();
    case menu::Control::mnurecordstream:
      return actions_.mnurecordstream_Click();
    case menu::Control::mnuplayervolume:
      return actions_.mnuplayervolume_Click();
    case menu::Control::mnuplayerwindow:
      return actions_.mnuplayerwindow_Click();
    case menu::Control::mnusetup:
      return actions_.mnusetup_Click();
    case menu::Control::mnuabout:
      return actions_.mnuabout_Click();
    case menu::Control::mnuquit:
      return actions_.mnuquit_Click();
    default:
      return;
  }
}

void StationMenus::mgenre_Click(int index) {
  current_genre_ = index;
}

void StationMenus::subgenre_Click(int genre, int index) {
  mgenre_Click(genre);  // the entry can only be clicked in the menu that is open
  if (genre == menu::kSearchGenre) return subgenre20_Click(index);
  clickStation(tree_.subgenre(genre), index);
}

void StationMenus::subgenre20_Click(int index) {
  if (tree_.subgenre(menu::kSearchGenre)[index].Tag == kSearchTag) return newSearch();
  if (query_.searchText() == kSearchCancelled) return icon_.normalicon();
  clickStation(tree_.subgenre(menu::kSearchGenre), index);
}

void StationMenus::newSearch() {
  const bool open = std::exchange(searching_, true);
  const bool asked = actions_.searchform();
  if (open) return;  // the click that opened it goes on
  searching_ = false;
  if (!asked || query_.searchText() == kSearchCancelled) return icon_.normalicon();

  // Whatever was opened or loaded while the dialog was.
  mgenre_Click(menu::kSearchGenre);
  menu::MenuArray& menu = tree_.subgenre(menu::kSearchGenre);
  for (int i = menu.UBound(); i >= 0; --i) {
    if (menu[i].Tag == kSearchTag) return clickStation(menu, i);
  }
}

void StationMenus::subspecial_Click(int index) {
  clickStation(tree_.subspecial, index);
}

void StationMenus::subfavs_Click(int index) {
  if (index == 1) return actions_.editfavs();
  if (index != 0) return clickStation(tree_.subfavs, index);
  if (selection_.Tag.empty()) return;
  menu::MenuItem& favourite = tree_.subfavs.load();
  favourite.Caption = selection_.Caption;
  favourite.Tag = selection_.Tag;
  favourite.Visible = true;
}

void StationMenus::subbit_Click(int index) {
  uncheck(tree_.subbit);
  tree_.subbit[index].Checked = true;
}

void StationMenus::substream_Click(int index) {
  constexpr std::size_t kShortestUrl = 4;
  if (tree_.substream[index].Tag.size() >= kShortestUrl) actions_.startplayer(index);
}

void StationMenus::clickStation(menu::MenuArray& menu, int index) {
  if (subgenroutine(menu, index)) icon_.normalicon();
}

bool StationMenus::subgenroutine(menu::MenuArray& menu, int index) {
  const unsigned turn = ++turn_;
  icon_.workicon();
  selection_ = {menu[index].Tag, menu[index].Caption};
  icon_.setCaption("Loading Data");

  bool superseded = false;
  if (selection_.Tag == "reload" || selection_.Tag == kSearchTag) {
    const bool reload = selection_.Tag == "reload";
    forgetChecked(menu);
    // Always the genre's own menu: a favourite may have been made of "Reload", and
    // the favourites must not become a list of stations.
    const int genre = current_genre_;
    const std::string checked = checked_tag_;
    const auto answer = reload ? query_.refresh(genre, Query::Mode::click, checked)
                               : query_.ladeonline(genre, Query::Mode::click, false, checked);
    superseded = answer == Query::Answer::superseded;
  } else {
    superseded = !playStation(menu, index);
  }
  if (superseded || turn != turn_) return false;
  icon_.setCaption("Kestrel");
  return true;
}

void StationMenus::forgetChecked(menu::MenuArray& menu) {
  for (const menu::MenuItem& item : menu) {
    if (item.Checked) checked_tag_ = item.Tag;
  }
  uncheck(menu);
}

bool StationMenus::playStation(menu::MenuArray& menu, int index) {
  const unsigned turn = turn_;
  const Selection station = selection_;
  uncheckall();
  const auto answer = query_.ladeplaylist(station.Tag);
  if (answer == Query::Answer::superseded || turn != turn_) return false;
  checkEntry(menu, index, station.Tag);
  actions_.lbstation(station.Caption);
  return true;
}

void StationMenus::uncheckall() {
  for (int i = 0; i < menu::kGenres; ++i) {
    if (tree_.mgenre[i].Visible) uncheck(tree_.subgenre(i));
  }
  uncheck(tree_.subspecial);
  uncheck(tree_.subfavs);
}

}  // namespace tray
