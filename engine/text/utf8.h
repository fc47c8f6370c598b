#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace engine {

/// Bytes of the UTF-8 character that begins there (1 to 4, RFC 3629); 0: none does.
size_t characterLength(std::string_view text);
bool isUtf8(std::string_view text);
/// What is no character becomes U+FFFD.
void appendUtf8(std::string& text, char32_t character);
/// Old 8-bit text, of which Windows-1252 is the usual kind. Never fails.
std::string utf8FromWindows1252(std::string_view text);
/// Either byte order; without a mark, `big_endian`. Broken pairs become U+FFFD.
std::string utf8FromUtf16(std::string_view bytes, bool big_endian);
/// The text without the beginning of a character at its end; nothing else is
/// changed, and nothing unless the rest is UTF-8.
std::string_view withoutCutCharacter(std::string_view text);

}  // namespace engine
