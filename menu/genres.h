#pragma once

#include <array>
#include <string_view>

namespace menu {

/// The directory's genres in the order of the menu slots: the key that a query
/// sends and a cache file is named after, and the English caption.
struct Genre {
  std::string_view key;
  std::string_view caption;
};

inline constexpr std::array<Genre, 20> kGenreTable = {{
    {"TopTen", "Top 25 Streams"},
    {"Alternative", "Alternative"},
    {"Classical", "Classical"},
    {"Comedy", "Comedy"},
    {"Country", "Country"},
    {"Dance", "Dance and House"},
    {"Funk", "Funk"},
    {"Jazz", "Jazz"},
    {"Metal", "Metal"},
    {"Mixed", "Mixed"},
    {"Pop", "Pop"},
    {"Rap", "Rap"},
    {"RnB", "RnB"},
    {"Rock", "Rock"},
    {"Talk", "Talk"},
    {"Techno", "Techno"},
    {"80s", "The 80s"},
    {"70s", "The 70s"},
    {"World", "World"},
    {"search", "Search"},
}};

/// The key of the last slot, which is no genre but the search results.
inline constexpr std::string_view kSearchKey = "search";

/// The bandwidth entries: caption and what a query ends in. The first and the
/// last ask for the same on purpose; only their captions differ.
struct Bitrate {
  std::string_view caption;
  std::string_view query;
};

inline constexpr std::array<Bitrate, 6> kBitrateTable = {{
    {"all bitrates", "&maxbitrate=999"},
    {"28.8 Modem", "&maxbitrate=24"},
    {"33.6 Modem", "&maxbitrate=32"},
    {"56k Modem", "&maxbitrate=56"},
    {"128k ISDN", "&maxbitrate=128"},
    {"DSL/Cable/Lan", "&maxbitrate=999"},
}};

}  // namespace menu
