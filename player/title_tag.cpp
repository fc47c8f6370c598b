#include "player/title_tag.h"

namespace player {

std::optional<std::string_view> titleOf(std::string_view tag) {
  constexpr std::string_view kStart = "StreamTitle='";
  if (!tag.starts_with(kStart)) return std::nullopt;
  const std::string_view rest = tag.substr(kStart.size());
  const std::size_t semicolon = rest.find(';');
  if (semicolon == 0) return std::string_view{};  // nothing before it, not even the quote
  if (semicolon != std::string_view::npos) return rest.substr(0, semicolon - 1);
  // Some servers forget the semicolon, or cut a long tag short.
  return rest.ends_with('\'') ? rest.substr(0, rest.size() - 1) : rest;
}

}  // namespace player
