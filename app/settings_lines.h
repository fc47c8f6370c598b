#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace app {

/// Called for each "key=value" with the key in lower case; neither is trimmed.
using SettingsEntry = std::function<void(std::string_view key, std::string_view value)>;

/// The line grammar of settings files: lines of at most two characters and
/// comments ("#" first of all but blanks) are skipped, the first "=" divides.
void forEachSetting(std::string_view text, const SettingsEntry& entry);

/// The same for a file; false when it cannot be read.
[[nodiscard]] bool readSettingsFile(const std::string& file, const SettingsEntry& entry);

}  // namespace app
