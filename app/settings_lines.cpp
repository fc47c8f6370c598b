#include "app/settings_lines.h"

#include "base/files.h"
#include "base/text.h"

namespace app {

void forEachSetting(std::string_view text, const SettingsEntry& entry) {
  base::Lines lines(text);
  for (std::string_view line; lines.next(line);) {
    if (line.size() <= 2 || base::trimBlanks(line).starts_with('#')) continue;
    const auto [key, value] = base::splitFirst(line, '=');
    if (value) entry(base::lowerCased(key), *value);
  }
}

bool readSettingsFile(const std::string& file, const SettingsEntry& entry) {
  const auto text = base::readWhole(file);
  if (text) forEachSetting(*text, entry);
  return text.has_value();
}

}  // namespace app
