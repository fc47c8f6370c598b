#include "player/record_name.h"

#include <algorithm>
#include <iterator>

#include "base/text.h"

namespace player {
namespace {

constexpr std::string_view kForbidden = ":/\\?*|<>\"";
constexpr std::string_view kExtension = ".mp3";

// Windows takes none of these in a name.
bool isControl(char c) {
  return static_cast<unsigned char>(c) < 0x20;
}

/// Windows opens a device for these, whatever extension follows.
bool isDeviceName(std::string_view name) {
  const std::string stem = base::lowerCased(base::trimBlanks(name.substr(0, name.find('.'))));
  if (stem == "con" || stem == "prn" || stem == "aux" || stem == "nul" || stem == "conin$" ||
      stem == "conout$")
    return true;
  if (!stem.starts_with("com") && !stem.starts_with("lpt")) return false;
  const std::string_view number = std::string_view(stem).substr(3);
  const bool digit = number.size() == 1 && number[0] >= '0' && number[0] <= '9';
  // The superscript digits count too, in UTF-8 and in the western code page.
  return digit || number == "\u00b9" || number == "\u00b2" || number == "\u00b3" ||
         number == "\xb9" || number == "\xb2" || number == "\xb3";
}

}  // namespace

std::string CleanFileName(std::string_view text) {
  std::string clean;
  std::copy_if(text.begin(), text.end(), std::back_inserter(clean),
               [](char c) { return kForbidden.find(c) == std::string_view::npos; });
  return clean;
}

std::string recordPath(std::string_view folder, std::string_view title) {
  const std::string name = CleanFileName(title);
  if (base::trimBlanks(name).empty() || isDeviceName(name) ||
      std::any_of(name.begin(), name.end(), isControl)) {
    return {};
  }
  std::string path(folder);
  path += '\\';
  path += name;
  path += kExtension;
  return path;
}

}  // namespace player
