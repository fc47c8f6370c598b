#include "app/settings_lines.h"

#include "app/files.h"
#include "app/text.h"

namespace app {

void forEachSetting(std::string_view text, const SettingsEntry& entry) {
  Lines lines(text);
  for (std::string_view line; lines.next(line);) {
    if (line.size() <= 2 || trimBlanks(line).starts_with('#')) continue;
    const auto [key, value] = splitFirst(line, '=');
    if (value) entry(lowerCased(key), *value);
  }
}

bool readSettingsFile(const std::string& file, const SettingsEntry& entry) {
  const auto text = readWhole(file);
  if (text) forEachSetting(*text, entry);
  return text.has_value();
}

}  // namespace app
