#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "app/paths.h"
#include "menu/menu_tree.h"

namespace app {

/// Everything of "settings.cfg" that is not the state of a menu entry. Read once
/// at the start, changed by dialogs and windows, written once at the end.
struct Settings {
  int showsplash = 1;           ///< 1 shows the splash window
  int showreloadallwindow = 1;  ///< 1 shows the progress of "Reload all"
  std::string maxentry = "20";  ///< stations asked for, sent as it stands
  std::int16_t maxchar = 50;    ///< longest title in a menu, in characters
  std::int16_t reloadonstartup = 0;
  std::string language = "0";  ///< a file name; "0" is the built-in English
  /// Where the player window stands, in twips (1/1440 inch); nothing leaves it
  /// where it is by design.
  std::optional<float> playerwin_left, playerwin_top;
  std::int16_t player = 0;      ///< 0 default application, 1 command, 2 internal player
  std::string playerpath;       ///< the command, "%1" standing for the file
  std::int16_t volume = 10000;  ///< of the volume popup's slider
  std::int16_t leftmouse = 0;   ///< 0 main, 1 genre, 2 player menu
  std::int16_t rightmouse = 0;
  std::int16_t playerstart = 0;  ///< 1 shows the player window at start

  /// The file is there and could not be read: savesettings() then puts it aside.
  bool unread = false;
};

/// What is read before any window exists: showsplash, showreloadallwindow and
/// language. The other keys are ladesettings()'s.
void readEarlySettings(std::string_view text, Settings& settings);

/// Reads "settings.cfg" of the data folder into `settings` and into the genres'
/// visibility and the checked bandwidth of `tree`. Values that make no sense
/// leave what was there.
void ladesettings(const Paths& paths, Settings& settings, menu::MenuTree& tree);

/// The same for the file's text.
void applySettings(std::string_view text, Settings& settings, menu::MenuTree& tree);

/// The file's text, CR LF line ends.
[[nodiscard]] std::string settingsText(const Settings& settings, const menu::MenuTree& tree);

/// Writes the file; false when that failed and the old one is still there.
[[nodiscard]] bool savesettings(const Paths& paths, const Settings& settings,
                                const menu::MenuTree& tree);

}  // namespace app
