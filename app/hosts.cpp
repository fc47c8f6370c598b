#include "app/hosts.h"

#include <utility>

#include "app/settings_lines.h"
#include "base/text.h"

namespace app {

Hosts readHosts(const std::string& file) {
  Hosts hosts;
  const std::pair<std::string_view, std::string*> keys[] = {
      {"directory", &hosts.directory},
      {"update", &hosts.update},
      {"website", &hosts.website},
      {"donate", &hosts.donate},
      {"directorysite", &hosts.directorysite},
      {"audiosite", &hosts.audiosite},
  };
  (void)readSettingsFile(file, [&](std::string_view key, std::string_view value) {
    for (const auto& [name, host] : keys) {
      if (key == name && !base::trimBlanks(value).empty()) *host = base::trimBlanks(value);
    }
  });
  return hosts;
}

}  // namespace app
