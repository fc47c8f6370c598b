#pragma once

#include <array>
#include <string_view>

/// The little world that the demo radio broadcasts from. Every name in it is
/// made up. Texts are UTF-8.
namespace demo_radio {

struct GenreNames {
  std::string_view key;      ///< as directory queries name it
  std::string_view caption;  ///< as a station announces it
  int mood;                  ///< index into kMoods
  std::array<std::string_view, 8> stations;
  std::array<std::string_view, 4> phrases;  ///< what a town's own station is called
  std::array<std::string_view, 5> artists;
};

inline constexpr std::size_t kGenreCount = 18;
extern const std::array<GenreNames, kGenreCount> kGenres;
extern const std::array<std::string_view, 26> kTowns;
extern const std::array<std::string_view, 24> kSongs;

}  // namespace demo_radio
