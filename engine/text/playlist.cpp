#include "engine/text/playlist.h"

#include <algorithm>
#include <array>

#include "engine/text/any_case.h"

namespace engine {
namespace {

constexpr std::string_view kMark = "\xef\xbb\xbf";
constexpr std::string_view kBlank = " \t\r\n";
constexpr size_t kFarEnough = 256;

// With these a page begins, whatever is said about its type.
constexpr std::array<std::string_view, 5> kPageStarts = {"<!doctype", "<html", "<head", "<body",
                                                         "<?xml"};
constexpr std::array<std::string_view, 4> kListStarts = {"#extm3u", "[playlist]", "http://",
                                                         "https://"};
constexpr std::array<std::string_view, 8> kListTypes = {
    "audio/x-mpegurl",       "audio/mpegurl",
    "application/x-mpegurl", "application/vnd.apple.mpegurl",
    "application/mpegurl",   "audio/x-scpls",
    "audio/scpls",           "application/pls"};

std::string_view withoutBlank(std::string_view text) {
  const size_t from = std::min(text.find_first_not_of(kBlank), text.size());
  return text.substr(from, text.find_last_not_of(kBlank) + 1 - from);
}

std::string_view withoutMark(std::string_view text) {
  return text.starts_with(kMark) ? text.substr(kMark.size()) : text;
}

// "File12=address", as its number and the address.
bool readPlsLine(std::string_view line, std::string& address) {
  const size_t equals = line.find('=');
  if (!startsWithAnyCase(line, "file") || equals == line.npos) return false;
  const std::string_view number = line.substr(4, equals - 4);
  if (!std::all_of(number.begin(), number.end(), [](char c) { return c >= '0' && c <= '9'; })) {
    return false;
  }
  address = withoutBlank(line.substr(equals + 1));
  return !address.empty();
}

}  // namespace

BodyKind bodyKind(std::string_view head, std::string_view type) {
  const bool whole = head.size() >= kFarEnough;
  if (!whole && (kMark.starts_with(head))) return BodyKind::undecided;
  std::string_view text = withoutMark(head);
  text.remove_prefix(std::min(text.find_first_not_of(kBlank), text.size()));
  if (text.empty() && !whole) return BodyKind::undecided;
  bool possible = false;
  const auto begins = [&](std::string_view start) {
    possible = possible || (text.size() < start.size() && startsWithAnyCase(start, text));
    return startsWithAnyCase(text, start);
  };
  if (std::any_of(kListStarts.begin(), kListStarts.end(), begins)) return BodyKind::playlist;
  if (std::any_of(kPageStarts.begin(), kPageStarts.end(), begins)) return BodyKind::page;
  if (possible && !whole) return BodyKind::undecided;
  // No text at all: the type is wrong.
  const auto plain = [](char c) { return static_cast<unsigned char>(c) >= ' ' || c == '\t'; };
  const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
  if (!std::all_of(line.begin(), line.end(), plain)) return BodyKind::sound;
  const auto named = [&](std::string_view start) { return startsWithAnyCase(type, start); };
  if (std::any_of(kListTypes.begin(), kListTypes.end(), named)) return BodyKind::playlist;
  return named("text/html") && text.starts_with('<') ? BodyKind::page : BodyKind::sound;
}

std::vector<std::string_view> textLines(std::string_view text) {
  text = withoutMark(text);
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const size_t end = std::min(text.find_first_of("\r\n"), text.size());
    const std::string_view line = withoutBlank(text.substr(0, end));
    if (!line.empty()) lines.push_back(line);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

std::vector<std::string> playlistAddresses(std::string_view text) {
  std::vector<std::string> addresses;
  const std::vector<std::string_view> lines = textLines(text);
  const bool pls = !lines.empty() && startsWithAnyCase(lines.front(), "[playlist]");
  for (const std::string_view line : lines) {
    std::string address(line);
    if (pls ? readPlsLine(line, address) : !line.starts_with('#')) {
      addresses.push_back(std::move(address));
    }
  }
  return addresses;
}

}  // namespace engine
