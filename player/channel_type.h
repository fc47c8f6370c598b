#pragma once

#include <string_view>

#include "engine/abi/bass.h"

namespace player {

/// Name of the library's channel type code; "Unknown" for one not in its list.
[[nodiscard]] std::string_view GetCTypeName(BASS_DWORD ctype);

}  // namespace player
