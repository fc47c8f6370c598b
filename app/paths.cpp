#include "app/paths.h"

#include "base/files.h"

namespace app {
namespace {

std::string withoutEndingBackslash(std::string_view folder) {
  while (!folder.empty() && folder.back() == '\\') folder.remove_suffix(1);
  return std::string(folder);
}

}  // namespace

std::string Paths::find(std::string_view relative) const {
  for (const std::string& folder : {datapath, program_folder}) {
    std::string path = folder + std::string(relative);
    if (base::fileExists(path)) return path;
  }
  return {};
}

std::string Paths::inData(std::string_view relative) const {
  return datapath + std::string(relative);
}

Paths makePaths(std::string_view appdata, std::string_view program_folder) {
  const std::string parent = withoutEndingBackslash(appdata) + "\\ardenware";
  Paths paths{parent + "\\kes", withoutEndingBackslash(program_folder)};
  if (!base::folderExists(parent) && base::makeFolder(parent) && base::makeFolder(paths.datapath)) {
    base::makeFolder(paths.inData("\\data"));
  }
  return paths;
}

}  // namespace app
