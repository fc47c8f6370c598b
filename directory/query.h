#pragma once

#include <string>
#include <string_view>

#include "app/captions.h"
#include "app/desktop.h"
#include "app/hosts.h"
#include "app/paths.h"
#include "app/settings.h"
#include "app/tray_icon.h"
#include "directory/station_lists.h"
#include "directory/transfer.h"
#include "menu/menu_tree.h"

namespace directory {

/// What happens to a station's playlist; the tray front end decides.
class PlaylistLauncher {
 public:
  virtual ~PlaylistLauncher() = default;

  /// Whether launch() would refuse such a file ("pls", as in an address): then it
  /// is not even fetched.
  [[nodiscard]] virtual bool refuses(std::string_view extension) = 0;

  /// Plays what was saved as `file`, the answer of `url`.
  virtual void launch(std::string_view url, const std::string& file) = 0;
};

/// What a Query works with; all of it must outlive it.
struct QueryParts {
  Transfer& transfer;
  app::Desktop& desktop;
  app::TrayIcon& icon;
  menu::MenuTree& tree;
  StationLists& lists;
  PlaylistLauncher& launcher;
  const app::Paths& paths;
  const app::Settings& settings;
  const app::Messages& messages;
  const app::Hosts& hosts;
};

/// Asks the directory for stations and fetches playlists. User-interface thread.
/// While a transfer waits, messages are dispatched and any of this may be called
/// again: the newer call wins, and the older one returns Superseded having done
/// nothing more.
class Query {
 public:
  explicit Query(const QueryParts& parts) : parts_(parts) {}

  enum class Answer {
    done,        ///< the menu is filled, or the playlist handed on
    no_station,  ///< a page without stations: menu and cache file are as they were
    failed,      ///< the user has been told
    superseded,  ///< nothing may follow
  };
  enum class Mode { click = 0, reload = 1 };  ///< a reload of all sets no check mark

  /// Stations of genre `slot` (the search list: of the search text) into its menu.
  /// `asSearch` uses the genre's key as a search word. `checked` is the address
  /// of the station to mark.
  Answer ladeonline(int slot, Mode mode, bool asSearch, const std::string& checked);

  /// ladeonline, and once more as a search when a genre's page had no station.
  Answer refresh(int slot, Mode mode, const std::string& checked);

  /// Fetches a station's playlist, saves it and hands it to the launcher.
  Answer ladeplaylist(const std::string& url);

  /// What the search list asks for, sent as it stands; "-" after a cancelled
  /// search dialog.
  [[nodiscard]] const std::string& searchText() const { return search_text_; }
  void setSearchText(std::string text) { search_text_ = std::move(text); }

  /// State of the last transfer, 11 (failed) or 12 (complete); 0 before the first.
  [[nodiscard]] int lastTransferState() const { return last_transfer_state_; }

  /// The program ends: every further answer will be superseded.
  [[nodiscard]] bool hasEnded() const { return ended_; }

 private:
  TransferResult get(const std::string& url);
  std::string queryUrl(int slot, bool asSearch) const;
  Answer fetchPlaylist(const std::string& url);
  Answer refuse(std::string_view message);
  bool savePlaylist(std::string_view playlist, const std::string& file) const;

  QueryParts parts_;
  std::string search_text_;
  int last_transfer_state_ = 0;
  bool ended_ = false;
};

}  // namespace directory
