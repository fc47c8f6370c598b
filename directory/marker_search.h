#pragma once

#include <cstddef>
#include <string_view>

namespace directory {

/// In front of it stand six characters of a station's link, behind it the rest.
inline constexpr std::string_view kMarker = "kestrel-playlist.pls";

/// Position of the marker, in any case of its letters, at or after `from`; npos
/// if there is none. Runs near the speed of memory: a page is mostly not marker.
[[nodiscard]] std::size_t findMarker(std::string_view page, std::size_t from);

}  // namespace directory
