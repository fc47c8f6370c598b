#pragma once

#include <optional>
#include <string_view>

namespace player {

/// The title in a tag "StreamTitle='…';…": what stands before the first
/// semicolon, less the closing quote. Nothing for any other tag.
[[nodiscard]] std::optional<std::string_view> titleOf(std::string_view tag);

}  // namespace player
