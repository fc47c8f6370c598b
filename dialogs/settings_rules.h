#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "app/settings.h"
#include "menu/menu_tree.h"

/// What the settings dialog does with what is in it, without the dialog.
namespace dialogs {

/// A picture beside a number: each step adds `step`; held down it goes on to `limit`.
struct Spin {
  int step;
  int limit;
};
inline constexpr Spin kImage1{1, 100};  ///< number of entries up
inline constexpr Spin kImage2{-1, 20};
inline constexpr Spin kImage4{1, 100};  ///< line length up
inline constexpr Spin kImage3{-1, 40};

/// The number after one step; nothing at the limit, and for what is no number. A
/// typed number beyond the limit makes its step all the same.
[[nodiscard]] std::optional<std::string> spinStep(std::string_view text, Spin spin);
/// Whether a picture that is held down goes on from there.
[[nodiscard]] bool spinGoesOn(std::string_view text, Spin spin);

/// What a number field holds once it is left: `stored` unless it is a number.
[[nodiscard]] std::string validated(std::string_view text, std::string_view stored);

/// The menus that the two mouse buttons open; -1 for a choice that does not exist.
struct MouseButtons {
  int left;
  int right;
  friend bool operator==(const MouseButtons&, const MouseButtons&) = default;
};
/// One of the two always opens the main menu: choosing another for one button gives
/// it back to the other.
[[nodiscard]] MouseButtons chooseLeft(MouseButtons now, int choice);
[[nodiscard]] MouseButtons chooseRight(MouseButtons now, int choice);

/// What the dialog's controls hold, by their names.
struct SettingsForm {
  bool Check1 = false, Check2 = false, Check4 = false, Check5 = false;
  std::string Text1, Text2, Text3;
  int Option1 = -1;
  std::string ic1;  ///< key of the chosen language: a file name or app::kBuiltInKey
  MouseButtons mouse{-1, -1};
  std::array<bool, menu::kGenres> List1{};
};

/// The controls as the dialog opens.
[[nodiscard]] SettingsForm settingsForm(const app::Settings& settings, const menu::MenuTree& tree);

/// Takes everything over but the own entries and the loading of the language. What
/// makes no sense leaves the setting as it was; a player that is no file becomes the
/// default player.
void applysettings(const SettingsForm& form, app::Settings& settings, menu::MenuTree& tree);

}  // namespace dialogs
