#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace engine {

/// What the player is told for a title block of a stream (its text, zeros at the
/// end included): "StreamTitle='…';" and the fields behind it. The player takes all
/// up to its first semicolon for the title, so that this is the only one in it;
/// others are replaced by a character of the same look. Nothing when the block
/// names no title.
std::optional<std::string> titleTag(std::string_view block);

/// The same for a title by itself, in UTF-8 or old 8-bit text.
std::string titleTagOf(std::string_view title);

}  // namespace engine
