#pragma once

#include <string>
#include <string_view>

namespace base {

/// 8-bit text to UTF-16 for the screen: valid UTF-8 as UTF-8, anything else as
/// Windows-1252, the code page of old files in practice. Never fails.
std::wstring toWide(std::string_view text);

/// UTF-16 of an edit field or a path to UTF-8; unpaired surrogates become U+FFFD.
std::string toNarrow(std::wstring_view text);

}  // namespace base
