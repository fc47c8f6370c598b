#include "app/startup.h"

#include "app/language_file.h"
#include "base/files.h"

namespace app {
namespace {

std::optional<std::string> splashMessage(std::string_view file) {
  LanguageEntries entries(file);
  for (std::string key, text; entries.next(key, text);) {
    if (key == "0001") return text;
  }
  return std::nullopt;
}

void preloadLanguage(Startup& start) {
  std::string& language = start.settings.language;
  if (language == "0" || language.size() <= 1) return;
  base::makeFolder(start.paths.inData("\\lang"));
  const std::string relative = "\\lang\\" + language;
  const std::string file = isLanguageFile(language) ? start.paths.find(relative) : "";
  if (file.empty()) {
    language.assign(1, '0');
    return;
  }
  if (const auto text = readLanguageFile(file)) start.splash_message = splashMessage(*text);
  const std::string own = start.paths.inData(relative);
  // Should the copy fail, the loader still finds the program's file.
  if (file != own) (void)base::copyFile(file, own);
}

}  // namespace

Startup prepareStartup(std::string_view appdata, std::string_view program_folder) {
  Startup start;
  start.paths = makePaths(appdata, program_folder);
  const std::string file = start.paths.find("\\settings.cfg");
  start.firstrun = file.empty();
  if (!start.firstrun) {
    const auto text = base::readWhole(file);
    start.settings.unread = !text;
    if (text) readEarlySettings(*text, start.settings);
  }
  preloadLanguage(start);
  return start;
}

}  // namespace app
