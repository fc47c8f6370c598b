#include "dialogs/settings_rules.h"

#include <vector>

#include "app/language_file.h"
#include "app/language_loader.h"
#include "base/files.h"
#include "base/text.h"

namespace dialogs {
namespace {

constexpr int kMenus = 3;    // that a mouse button can open
constexpr int kPlayers = 3;  // default, selected, internal

int inRange(int value, int count) {
  return value >= 0 && value < count ? value : -1;
}

void choose(std::int16_t& setting, int choice) {
  if (choice >= 0) setting = static_cast<std::int16_t>(choice);
}

// Cut at every blank: a path with blanks counts by its first piece, and one in quotes
// before a quoted "%1" keeps a quote; both then name no file.
bool namesPlayer(const std::string& command) {
  std::vector<std::string> parts;
  return app::splitclean(command, " ", parts) > 0 && base::fileExists(parts.front());
}

}  // namespace

std::optional<std::string> spinStep(std::string_view text, Spin spin) {
  const auto value = base::toInt32(text);
  if (!value || *value == spin.limit) return std::nullopt;
  return std::to_string(std::int64_t{*value} + spin.step);
}

bool spinGoesOn(std::string_view text, Spin spin) {
  const auto value = base::toInt32(text);
  if (!value) return false;
  return spin.step > 0 ? *value < spin.limit : *value > spin.limit;
}

std::string validated(std::string_view text, std::string_view stored) {
  return std::string(base::toNumber(text) ? text : stored);
}

MouseButtons chooseLeft(MouseButtons now, int choice) {
  return {choice, choice == 0 ? now.right : 0};
}

MouseButtons chooseRight(MouseButtons now, int choice) {
  return {choice == 0 ? now.left : 0, choice};
}

SettingsForm settingsForm(const app::Settings& settings, const menu::MenuTree& tree) {
  SettingsForm form;
  form.Check1 = settings.showsplash == 1;
  form.Check2 = settings.showreloadallwindow == 1;
  form.Check4 = settings.reloadonstartup == 1;
  form.Check5 = settings.playerstart == 1;
  form.Text1 = settings.maxentry;
  form.Text2 = std::to_string(settings.maxchar);
  form.Text3 = settings.playerpath;
  form.Option1 = inRange(settings.player, kPlayers);
  form.ic1 =
      app::isLanguageFile(settings.language) ? settings.language : std::string(app::kBuiltInKey);
  form.mouse = {inRange(settings.leftmouse, kMenus), inRange(settings.rightmouse, kMenus)};
  for (int i = 0; i < menu::kGenres; ++i) {
    form.List1[static_cast<std::size_t>(i)] = tree.mgenre[i].Visible;
  }
  return form;
}

void applysettings(const SettingsForm& form, app::Settings& settings, menu::MenuTree& tree) {
  settings.showsplash = form.Check1 ? 1 : 0;
  settings.showreloadallwindow = form.Check2 ? 1 : 0;
  settings.reloadonstartup = form.Check4 ? 1 : 0;
  settings.playerstart = form.Check5 ? 1 : 0;
  for (int i = 0; i < menu::kGenres; ++i) {
    tree.mgenre[i].Visible = form.List1[static_cast<std::size_t>(i)];
  }
  settings.language = form.ic1 == app::kBuiltInKey ? "0" : form.ic1;
  settings.maxentry = validated(form.Text1, settings.maxentry);
  if (const auto number = base::toInt16(form.Text2)) settings.maxchar = *number;
  choose(settings.player, form.Option1);
  if (form.Option1 == 1 && !namesPlayer(form.Text3)) settings.player = 0;
  settings.playerpath = form.Text3;
  choose(settings.leftmouse, form.mouse.left);
  choose(settings.rightmouse, form.mouse.right);
}

}  // namespace dialogs
