#include "app/settings.h"

#include <array>
#include <cstdio>

#include "app/settings_lines.h"
#include "base/files.h"
#include "base/text.h"

namespace app {
namespace {

using menu::kGenres;
using menu::MenuTree;

void setNumber(std::int16_t& target, std::string_view value) {
  if (const auto number = base::toInt16(value)) target = *number;
}

void setPosition(std::optional<float>& target, std::string_view value) {
  constexpr double kFarthest = 1e7;  // twips; no desktop is that large
  const auto number = base::toNumber(value);
  if (number && *number >= -kFarthest && *number <= kFarthest) {
    target = static_cast<float>(*number);
  }
}

// All twenty or none: half a list would hide the wrong genres.
void setGenres(MenuTree& tree, std::string_view value) {
  const auto parts = base::split(value, ";");
  if (parts.size() < kGenres) return;
  std::array<bool, kGenres> visible{};
  for (std::size_t i = 0; i < kGenres; ++i) {
    const auto flag = base::toBoolean(parts[i]);
    if (!flag) return;
    visible[i] = *flag;
  }
  for (int i = 0; i < kGenres; ++i) tree.mgenre[i].Visible = visible[static_cast<std::size_t>(i)];
}

void setBitrate(MenuTree& tree, std::string_view value) {
  const auto index = base::toInt16(value);
  if (!index || *index < 0 || *index > tree.subbit.UBound()) return;
  for (auto& entry : tree.subbit) entry.Checked = false;
  tree.subbit[*index].Checked = true;
}

std::string positionText(const std::optional<float>& position) {
  if (!position) return {};
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.7g", static_cast<double>(*position));
  return text.data();
}

std::string genreText(const MenuTree& tree) {
  std::string list;
  for (int i = 0; i < kGenres; ++i) {
    if (i > 0) list += ';';
    list += tree.mgenre[i].Visible ? '1' : '0';
  }
  return list;
}

// The whole line, which is empty when nothing is checked.
std::string bitrateLine(const MenuTree& tree) {
  std::string line;
  for (int i = 0; i <= tree.subbit.UBound(); ++i) {
    if (tree.subbit[i].Checked) line = "bitrate=" + std::to_string(i);
  }
  return line;
}

}  // namespace

void readEarlySettings(std::string_view text, Settings& settings) {
  forEachSetting(text, [&](std::string_view key, std::string_view value) {
    if (key == "showsplash") {
      const auto number = base::toNumber(value);
      if (number && *number != 1) settings.showsplash = 0;
    } else if (key == "showreloadallwindow") {
      if (const auto number = base::toInt32(value)) settings.showreloadallwindow = *number;
    } else if (key == "language") {
      settings.language = value;
    }
  });
}

void applySettings(std::string_view text, Settings& settings, MenuTree& tree) {
  forEachSetting(text, [&](std::string_view key, std::string_view value) {
    if (key == "genre") {
      setGenres(tree, value);
    } else if (key == "bitrate") {
      setBitrate(tree, value);
    } else if (key == "maxentry") {
      settings.maxentry = base::toNumber(value) ? std::string(value) : "20";
    } else if (key == "maxchar") {
      settings.maxchar = 50;
      setNumber(settings.maxchar, value);
    } else if (key == "reloadonstartup") {
      const auto number = base::toNumber(value);
      if (number && *number > 0) settings.reloadonstartup = 1;
    } else if (key == "playerwin_left") {
      setPosition(settings.playerwin_left, value);
    } else if (key == "playerwin_top") {
      setPosition(settings.playerwin_top, value);
    } else if (key == "player") {
      setNumber(settings.player, value);
    } else if (key == "playerpath") {
      settings.playerpath = value == "-" ? "" : value;
    } else if (key == "volume") {
      setNumber(settings.volume, value);
    } else if (key == "leftmouse") {
      setNumber(settings.leftmouse, value);
    } else if (key == "rightmouse") {
      setNumber(settings.rightmouse, value);
    } else if (key == "playerstart") {
      setNumber(settings.playerstart, value);
    }
  });
}

void ladesettings(const Paths& paths, Settings& settings, MenuTree& tree) {
  const std::string file = paths.inData("\\settings.cfg");
  if (!base::fileExists(file)) return;
  const auto text = base::readWhole(file);
  if (text && settings.unread) readEarlySettings(*text, settings);
  settings.unread = !text;
  if (text) applySettings(*text, settings, tree);
}

std::string settingsText(const Settings& settings, const MenuTree& tree) {
  std::string text;
  const auto line = [&](std::string_view content) {
    text.append(base::oneLine(content)).append("\r\n");
  };
  const auto entry = [&](const char* key, std::string_view value) {
    line(std::string(key) + '=' + std::string(value));
  };
  const auto number = [&](const char* key, int value) { entry(key, std::to_string(value)); };

  line("#config for kestrel 1.0.68+");
  line("#do not edit");
  line("");
  entry("genre", genreText(tree));
  line(bitrateLine(tree));
  number("showsplash", settings.showsplash);
  number("showreloadallwindow", settings.showreloadallwindow);
  entry("maxentry", settings.maxentry);
  number("maxchar", settings.maxchar);
  number("reloadonstartup", settings.reloadonstartup);
  entry("language", settings.language.empty() ? "0" : settings.language);
  entry("playerwin_left", positionText(settings.playerwin_left));
  entry("playerwin_top", positionText(settings.playerwin_top));
  number("player", settings.player);
  entry("playerpath", settings.playerpath.empty() ? "-" : settings.playerpath);
  number("volume", settings.volume);
  number("leftmouse", settings.leftmouse);
  number("rightmouse", settings.rightmouse);
  number("playerstart", settings.playerstart);
  return text;
}

bool savesettings(const Paths& paths, const Settings& settings, const MenuTree& tree) {
  const std::string file = paths.inData("\\settings.cfg");
  if (settings.unread && base::fileExists(file) && !base::moveFile(file, file + ".old"))
    return false;
  return base::replaceFile(file, settingsText(settings, tree));
}

}  // namespace app
