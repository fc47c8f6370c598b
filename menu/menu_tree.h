#pragma once

#include <array>
#include <vector>

#include "menu/menu_model.h"

namespace menu {

inline constexpr int kGenres = 20;       ///< slots, the last one being the search list
inline constexpr int kSearchGenre = 19;  ///< its index

/// Every popup that can open: the three roots of the tray icon and the submenus.
/// A genre's station menu is `stations` with the genre's index.
struct Popup {
  enum class Kind {
    mainmenu,
    genremenu,
    mnuplayer,
    mnubitrate,
    stations,
    subspecial,
    subfavs,
    substream
  };
  Kind kind;
  int genre = 0;
  friend bool operator==(const Popup&, const Popup&) = default;
};

/// The controls a click can land on, by the program's own names.
enum class Control {
  genremenu,
  mgenre,
  mgenrespecial,
  mgenrefavs,
  mgenreall,
  mnubitrate,
  mnuplayer,
  subgenre,
  subspecial,
  subfavs,
  subbit,
  subplayerplay,
  subplayerstop,
  mnurecordstream,
  mnuplayervolume,
  mnuplayerwindow,
  subplayerstream,
  substream,
  mnusetup,
  mnuabout,
  mnuquit,
  separator,
};

/// A control with its index in the control array (0 where there is none); for
/// `subgenre` also the genre whose station menu it stands in.
struct Click {
  Control control;
  int index = 0;
  int genre = 0;
};

/// One line of an open popup.
struct Line {
  const MenuItem* item;
  Click click;
  const Popup* submenu = nullptr;  ///< points into the tree; null for a plain entry
};

/// The whole tree of the program's menus, with its English design captions.
/// Lives on the user-interface thread; a native menu is made of it only when one
/// opens.
class MenuTree {
 public:
  MenuTree();

  MenuItem mainmenu, genremenu, specialtrenner, mgenrespecial, trenn4favs, mgenrefavs,
      mgenretrenner, mgenreall, mnubitrate, ptrenn, mnuplayer, trenn3, mnusetup, trenn1, mnuabout,
      trenxx, mnuquit;
  MenuItem subplayerplay, subplayerstop, mnurecordstream, playertrenner, mnuplayervolume, ptrenner2,
      mnuplayerwindow, subplayerstream;
  MenuArray mgenre, subspecial, subfavs, subbit, substream;

  /// The station menu of genre `index` (0 to 19), `subgenre1` to `subgenre20`.
  [[nodiscard]] MenuArray& subgenre(int index) {
    return subgenres_[static_cast<std::size_t>(index)];
  }
  [[nodiscard]] const MenuArray& subgenre(int index) const {
    return subgenres_[static_cast<std::size_t>(index)];
  }

  /// The visible lines of a popup, in order. The pointers hold until the tree
  /// changes.
  [[nodiscard]] std::vector<Line> lines(const Popup& popup) const;

 private:
  std::vector<MenuArray> subgenres_;
};

}  // namespace menu
