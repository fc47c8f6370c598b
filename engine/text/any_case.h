#pragma once

#include <string_view>

namespace engine {

/// Of ASCII letters only: what names and signs are made of, whatever the text around
/// them is.
char lower(char c);
bool startsWithAnyCase(std::string_view text, std::string_view start);

}  // namespace engine
