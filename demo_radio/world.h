#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "demo_radio/palette.h"

namespace demo_radio {

struct Station {
  int id;     ///< as playlist links carry it
  int genre;  ///< index into kGenres
  int mood;   ///< index into kMoods
  int tone;   ///< 0 to kTones - 1
  int listeners;
  bool western;       ///< its page texts and titles are Windows-1252, else UTF-8
  std::string name;   ///< in the station's own encoding
  std::string mount;  ///< its stream is /stream/ and this

  [[nodiscard]] Format format() const { return toneFormat(tone); }
};

/// All stations that exist. Unchanging once made.
class World {
 public:
  explicit World(int stations_per_genre);

  [[nodiscard]] const std::vector<Station>& all() const { return stations_; }
  /// Null when there is none.
  [[nodiscard]] const Station* byId(int id) const;
  [[nodiscard]] const Station* byMount(std::string_view mount) const;

  /// Stations of a genre key, most listeners first; "TopTen" is the best of all
  /// genres. Only those of at most `max_kbit`, at most `limit` of them.
  [[nodiscard]] std::vector<const Station*> genre(std::string_view key, int max_kbit,
                                                  std::size_t limit) const;
  /// Stations whose name or genre holds one of the words, whatever the case.
  [[nodiscard]] std::vector<const Station*> search(std::string_view words, int max_kbit,
                                                   std::size_t limit) const;

 private:
  int per_genre_;
  std::vector<Station> stations_;
};

/// "Artist - Song" of a station's n-th song, in the station's encoding.
std::string songTitle(const Station& station, std::uint64_t song);

}  // namespace demo_radio
