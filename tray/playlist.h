#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/captions.h"
#include "app/paths.h"
#include "menu/menu_tree.h"

namespace tray {

/// The streams of the last playlist read, as a list for the player and as the
/// entries of "Select Stream". User-interface thread.
class Playlist {
 public:
  Playlist(const app::Paths& paths, const app::Messages& messages, menu::MenuTree& tree)
      : paths_(paths), messages_(messages), tree_(tree) {}

  /// Reads a saved playlist; with a path shorter than two characters the one that
  /// was saved last, if any.
  void playlisteinlesen(std::string path);

  /// Addresses in the playlist's order and one empty element behind them; empty
  /// when the last playlist had none. The player works from this list.
  [[nodiscard]] const std::vector<std::string>& streamlist() const { return streamlist_; }

 private:
  void setEntries(const std::vector<std::string_view>& urls);

  const app::Paths& paths_;
  const app::Messages& messages_;
  menu::MenuTree& tree_;
  std::vector<std::string> streamlist_;
};

/// The addresses in a playlist's text, as views of it, by the extension of its
/// file: "pls" or "m3u" in any case, none for another.
[[nodiscard]] std::vector<std::string_view> playlistUrls(std::string_view text,
                                                         std::string_view extension);

}  // namespace tray
