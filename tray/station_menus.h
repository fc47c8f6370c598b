#pragma once

#include <string>

#include "app/tray_icon.h"
#include "directory/query.h"
#include "menu/menu_tree.h"
#include "tray/menu_actions.h"

namespace tray {

/// What happens when an entry of any menu is clicked. User-interface thread. A
/// click may arrive while an earlier one waits for the network; the earlier one
/// then ends without a trace.
class StationMenus {
 public:
  StationMenus(menu::MenuTree& tree, directory::Query& query, app::TrayIcon& icon,
               MenuActions& actions)
      : tree_(tree), query_(query), icon_(icon), actions_(actions) {}

  /// Carries out a click on a line. Does nothing for one that is greyed, hidden
  /// or no longer there.
  void click(const menu::Click& click);

  /// The genre's station menu was opened.
  void mgenre_Click(int index);
  void subgenre_Click(int genre, int index);
  /// "New Search" asks for the words first; after Cancel nothing in the list does
  /// anything until a search is confirmed.
  void subgenre20_Click(int index);
  void subspecial_Click(int index);
  void subfavs_Click(int index);
  void subbit_Click(int index);
  void substream_Click(int index);

  /// The common road of every station menu's click. False when a newer click
  /// took over: then nothing may follow.
  bool subgenroutine(menu::MenuArray& menu, int index);

  /// Takes the check mark from every station of the visible genres, the
  /// favourites and the own entries.
  void uncheckall();

  /// The entry clicked last in a station menu, of whatever kind; empty at first.
  struct Selection {
    std::string Tag;
    std::string Caption;
  };
  [[nodiscard]] const Selection& selection() const { return selection_; }

 private:
  [[nodiscard]] const menu::MenuItem* itemOf(const menu::Click& click) const;
  void clickStation(menu::MenuArray& menu, int index);
  void newSearch();
  void forgetChecked(menu::MenuArray& menu);
  bool playStation(menu::MenuArray& menu, int index);

  menu::MenuTree& tree_;
  directory::Query& query_;
  app::TrayIcon& icon_;
  MenuActions& actions_;
  bool searching_ = false;  // the search dialog is open
  int current_genre_ = 0;   // whose station menu was opened last
  Selection selection_;
  std::string checked_tag_;  // of the station that was checked before a reload
  unsigned turn_ = 0;        // counts clicks, so that an overtaken one knows
};

}  // namespace tray
