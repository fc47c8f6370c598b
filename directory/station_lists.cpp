#include "directory/station_lists.h"

#include <cstdint>
#include <limits>
#include <utility>

#include "base/files.h"
#include "base/text.h"
#include "directory/page.h"
#include "directory/records.h"
#include "menu/genres.h"

namespace directory {
namespace {

using menu::MenuArray;
using menu::MenuItem;

const std::string kFavsFile = "\\data\\favs.dat";
const std::string kSpecialFile = "\\data\\special.dat";

// Entry `index`, which exists already or is the next one.
MenuItem& entryAt(MenuArray& menu, int index) {
  return index <= menu.UBound() ? menu[index] : menu.load();
}

void setStation(MenuItem& item, std::string caption, std::string url) {
  if (item.Tag != url) item.Checked = false;  // the mark was the previous station's
  item.Caption = std::move(caption);
  item.Tag = std::move(url);
  item.Visible = true;
  item.Enabled = true;
}

std::string records(const MenuArray& menu, int first) {
  std::string text;
  for (int i = first; i <= menu.UBound(); ++i) {
    appendOwnRecord(text, menu[i].Caption, menu[i].Tag);
  }
  return text;
}

// Own entries that are due; tells the caller of the first that has expired.
template <typename Use>
bool forEachDueSpecial(std::string_view text, const std::string& today, const Use& use) {
  bool expired = false;
  forEachRecord(text, [&](const Record& record, int fields) {
    const bool dated = fields == 3 && !record.date.empty() && base::toNumber(record.date) != 0;
    if (dated && record.date < today) {
      expired = true;
    } else {
      use(record);
    }
  });
  return expired;
}

}  // namespace

menu::MenuItem emptySpecials() {
  return {"leer", {}};
}

StationLists::StationLists(const app::Paths& paths, const app::Settings& settings,
                           const app::Messages& messages, menu::MenuTree& tree, std::string today)
    : paths_(paths),
      settings_(settings),
      messages_(messages),
      tree_(tree),
      today_(std::move(today)) {}

void StationLists::loadAtStart() {
  const std::string folder = paths_.inData("\\data");
  if (!base::folderExists(folder)) {
    base::makeFolder(folder);
    return;
  }
  for (int i = 0; i < menu::kGenres; ++i) {
    const std::string file = paths_.find("\\data\\" + tree_.mgenre[i].Tag + ".dat");
    const Kind kind = i == menu::kSearchGenre ? Kind::suche : Kind::genre;
    if (!file.empty()) ladeoffline(tree_.subgenre(i), file, kind);
  }
  const std::string favourites = paths_.find(kFavsFile);
  if (!favourites.empty() && !ladefavs(tree_.subfavs, favourites)) unread_favourites_ = favourites;
  specialreloaded();
}

void StationLists::ladeoffline(MenuArray& menu, const std::string& file, Kind kind) {
  menu.unloadAbove(0);
  const auto text = base::readWhole(file);
  if (!text || text->size() < 2) return;
  int k = -1;
  forEachRecord(*text, [&](const Record& record, int fields) {
    if (fields != 2) return;
    setStation(entryAt(menu, ++k), base::cutTitle(record.title, settings_.maxchar),
               std::string(record.url));
  });
  closeList(menu, kind, "-");
}

bool StationLists::ladefavs(MenuArray& menu, const std::string& file) {
  const auto text = base::readWhole(file);
  if (!text) return false;
  forEachRecord(*text, [&](const Record& record, int fields) {
    if (fields == 2) setStation(menu.load(), std::string(record.title), std::string(record.url));
  });
  return true;
}

void StationLists::ladespecial(MenuArray& menu, const std::string& file) {
  const auto text = base::readWhole(file);
  unread_specials_ = !text;
  if (!text) return;  // the entries that are there are better than none
  menu.unloadAbove(0);
  int k = -1;
  const bool expired = forEachDueSpecial(*text, today_, [&](const Record& record) {
    setStation(entryAt(menu, ++k), base::cutTitle(record.title, settings_.maxchar),
               std::string(record.url));
  });
  expired_specials_ = expired_specials_ || expired;
  // An entry that has left the file must not stay behind as entry 0.
  if (k < 0) menu[0] = emptySpecials();
}

void StationLists::specialreloaded() {
  const std::string file = paths_.find(kSpecialFile);
  const bool there = !file.empty();
  if (there) ladespecial(tree_.subspecial, file);
  tree_.mgenrespecial.Enabled = there;
  tree_.mgenrespecial.Visible = there;
  tree_.specialtrenner.Visible = there;
}

std::optional<std::vector<OwnEntry>> StationLists::specials() const {
  std::vector<OwnEntry> rows;
  const std::string file = paths_.find(kSpecialFile);
  if (file.empty()) return rows;
  const auto text = base::readWhole(file);
  if (!text) return std::nullopt;
  forEachDueSpecial(*text, today_, [&](const Record& record) {
    rows.push_back({std::string(record.title), std::string(record.url)});
  });
  return rows;
}

bool StationLists::writeSpecials(const std::vector<OwnEntry>& rows) {
  const std::string old = paths_.find(kSpecialFile);
  if (rows.empty() && old.empty()) {  // an empty file would show a menu
    specialreloaded();
    return true;
  }
  if (!old.empty() && !base::readWhole(old)) return false;
  std::string text;
  for (const OwnEntry& row : rows) appendOwnRecord(text, row.title, row.url);
  base::makeFolder(paths_.inData("\\data"));
  const bool written = base::replaceFile(paths_.inData(kSpecialFile), text);
  specialreloaded();
  return written;
}

bool StationLists::menueinlesen(std::string_view page, std::string_view host, int slot,
                                std::string_view checked) {
  const auto stations = scanPage(page);
  MenuArray& menu = tree_.subgenre(slot);
  const auto mark = [&] {
    if (checked.empty()) return;
    for (MenuItem& item : menu) item.Checked = item.Checked || item.Tag == checked;
  };
  if (stations.empty()) {
    mark();  // the list stays, and so does what plays
    return false;
  }
  menu.unloadAbove(0);
  menu.reserve(stations.size() + 2);
  const std::string address = "http://" + std::string(host);
  std::string file;
  int k = -1;
  for (const PageStation& station : stations) {
    const std::string title = base::oneLine(station.title);
    std::string url = station.link.empty() ? "" : address + base::oneLine(station.link);
    appendRecord(file, title, url);
    setStation(entryAt(menu, ++k), base::cutTitle(title, settings_.maxchar), std::move(url));
  }
  closeList(menu, slot == menu::kSearchGenre ? Kind::suche : Kind::genre, "xt");

  base::makeFolder(paths_.inData("\\data"));
  // Without the file the menu still serves this run.
  caches_.replace(paths_.inData("\\data\\" + tree_.mgenre[slot].Tag + ".dat"), std::move(file));
  mark();
  return true;
}

bool StationLists::writeAtEnd() {
  bool written = writeFavourites();
  if (expired_specials_ && !unread_specials_) {
    const std::string file = paths_.inData(kSpecialFile);
    written = base::replaceFile(file, records(tree_.subspecial, 0)) && written;
  }
  caches_.finish();
  return written;
}

bool StationLists::writeFavourites() {
  if (tree_.subfavs.UBound() < kFirstFavourite) return true;
  std::string text = records(tree_.subfavs, kFirstFavourite);
  if (!unread_favourites_.empty()) {
    // What could not be read at the start is still the user's: it stays in front.
    auto old = base::readWhole(unread_favourites_, std::numeric_limits<std::int32_t>::max());
    if (!old) return false;
    if (!old->empty() && old->back() != '\n') old->append("\r\n");
    text.insert(0, *old);
  }
  return base::replaceFile(paths_.inData(kFavsFile), text);
}

std::string StationLists::closingCaption(Kind kind) const {
  return kind == Kind::suche ? messages_.msgnewsearch : messages_.reload;
}

void StationLists::closeList(MenuArray& menu, Kind kind, std::string_view separator_tag) {
  const bool search = kind == Kind::suche;
  menu.load() = MenuItem{"-", std::string(separator_tag)};
  menu.load() = MenuItem{closingCaption(kind), search ? "search" : "reload"};
}

}  // namespace directory
