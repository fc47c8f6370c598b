#include "player/record_name.h"

#include <algorithm>
#include <iterator>

#include "app/text.h"

namespace player {
namespace {

constexpr std::string_view kForbidden = ":/\\?*|<>\"";
constexpr std::string_view kExtension = ".mp3";
constexpr std::size_t kMaxPath = 259;   // Windows' MAX_PATH without the end mark
constexpr std::size_t kMaxTitle = 180;  // enough for any, short enough to read
constexpr std::size_t kMinTitle = 16;

bool isControl(char c) {
  const auto code = static_cast<unsigned char>(c);
  return code < 0x20 || code == 0x7f;
}

/// Windows opens a device for these, whatever extension follows.
bool isDeviceName(std::string_view name) {
  const std::string stem = app::lowerCased(app::trimBlanks(name.substr(0, name.find('.'))));
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

/// The first `limit` bytes, less the beginning of a character cut in two.
std::string_view cut(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text;
  const auto continues = [&](std::size_t at) {
    return (static_cast<unsigned char>(text[at]) & 0xc0) == 0x80;
  };
  std::size_t end = limit;
  // A character has at most three continuation bytes; more of them is not UTF-8.
  while (end > 0 && limit - end < 4 && continues(end)) --end;
  return text.substr(0, continues(end) ? limit : end);
}

}  // namespace

std::string CleanFileName(std::string_view text) {
  std::string clean;
  std::copy_if(text.begin(), text.end(), std::back_inserter(clean),
               [](char c) { return kForbidden.find(c) == std::string_view::npos; });
  return clean;
}

std::string recordPath(std::string_view folder, std::string_view title) {
  std::string name = CleanFileName(title);
  std::erase_if(name, isControl);
  if (app::trimBlanks(name).empty()) return {};
  if (isDeviceName(name)) name.insert(name.begin(), '_');
  const std::size_t taken = folder.size() + 1 + kExtension.size();
  const std::size_t room = kMaxPath > taken ? kMaxPath - taken : 0;
  std::string path(folder);
  path += '\\';
  path += cut(name, std::clamp(room, kMinTitle, kMaxTitle));
  path += kExtension;
  return path;
}

}  // namespace player
