#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/captions.h"
#include "app/hosts.h"
#include "app/paths.h"
#include "app/settings.h"
#include "base/file_writer.h"
#include "directory/own_lists.h"
#include "menu/menu_tree.h"

namespace directory {

/// Index of the first favourite in `subfavs`, behind the menu's own entries.
inline constexpr int kFirstFavourite = 3;

/// What stands in `subspecial` when it is empty: entry 0 cannot be unloaded.
[[nodiscard]] menu::MenuItem emptySpecials();

/// Fills the station menus from pages and from the list files, and writes the
/// files. Everything it is given must outlive it. User-interface thread; nothing
/// here dispatches messages.
class StationLists {
 public:
  /// `today` is the date as "yyyymmdd", with which dated own entries are compared.
  StationLists(const app::Paths& paths, const app::Settings& settings,
               const app::Messages& messages, menu::MenuTree& tree, std::string today);

  /// All menus from the files, those of the program folder standing in for the
  /// user's; makes the data folder's "\data" instead when there is none.
  void loadAtStart();

  enum class Kind { genre, suche };
  /// Replaces a station menu by the records of a cache file.
  void ladeoffline(menu::MenuArray& menu, const std::string& file, Kind kind);
  /// Appends the records behind the menu's own entries. False when the file could
  /// not be read.
  bool ladefavs(menu::MenuArray& menu, const std::string& file);
  /// Replaces the menu by the records that have not expired.
  void ladespecial(menu::MenuArray& menu, const std::string& file);

  /// Reads the own entries again and shows or hides their menu.
  void specialreloaded();

  /// The own entries that have not expired, titles in full. Nothing when their file
  /// cannot be read: then they cannot be edited either.
  [[nodiscard]] std::optional<std::vector<OwnEntry>> specials() const;

  /// Makes these the own entries, in the file and in the menu; dates are dropped.
  /// False when the file could not be written or the old one not be read: that one
  /// is then untouched.
  [[nodiscard]] bool writeSpecials(const std::vector<OwnEntry>& rows);

  /// The stations of a page become genre `slot`'s menu and soon its cache file. False
  /// when there is none: menu and file stay as they are.
  /// `checked` is the address of the station that gets the check mark, if any.
  bool menueinlesen(std::string_view page, std::string_view host, int slot,
                    std::string_view checked);

  /// Waits until the cache files are what the menus are.
  void finishCaches() { caches_.finish(); }

  /// At the end of the program: favourites if there are any, own entries if some
  /// have expired; then all caches are written too. False when a file could not be written; the old
  /// one is whole.
  [[nodiscard]] bool writeAtEnd();

 private:
  std::string closingCaption(Kind kind) const;
  void closeList(menu::MenuArray& menu, Kind kind, std::string_view separator_tag);
  [[nodiscard]] bool writeFavourites();

  const app::Paths& paths_;
  const app::Settings& settings_;
  const app::Messages& messages_;
  menu::MenuTree& tree_;
  std::string today_;
  base::FileWriter caches_;
  bool expired_specials_ = false;
  bool unread_specials_ = false;   // the menu does not hold what the file does
  std::string unread_favourites_;  // the file that could not be read at the start
};

}  // namespace directory
