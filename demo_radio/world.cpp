#include "demo_radio/world.h"

#include <algorithm>
#include <cctype>
#include <functional>
#include <utility>

#include "demo_radio/world_names.h"

namespace demo_radio {
namespace {

constexpr int kIdsPerGenre = 1000;

/// The names hold nothing beyond Latin-1, which Windows-1252 shares.
std::string toWestern(std::string_view utf8) {
  std::string western;
  for (std::size_t i = 0; i < utf8.size(); ++i) {
    const auto lead = static_cast<unsigned char>(utf8[i]);
    if (lead < 0x80 || i + 1 == utf8.size()) {
      western += utf8[i];
    } else {
      const auto next = static_cast<unsigned char>(utf8[++i]);
      western += static_cast<char>((lead & 3U) << 6U | (next & 0x3FU));
    }
  }
  return western;
}

std::string lower(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return result;
}

/// Famous stations first, then the towns' own.
std::string stationName(const GenreNames& genre, std::size_t index) {
  if (index < genre.stations.size()) return std::string(genre.stations[index]);
  const std::size_t town = (index * 7 + genre.key.size()) % kTowns.size();
  const std::size_t round = index / kTowns.size();
  std::string name = std::string(kTowns[town]) + " " +
                     std::string(genre.phrases[(index + town) % genre.phrases.size()]);
  return round == 0 ? name : name + " " + std::to_string(round + 1);
}

Station makeStation(int genre, int index) {
  const GenreNames& names = kGenres[static_cast<std::size_t>(genre)];
  const bool western = index % 3 == 1;
  const std::string name = stationName(names, static_cast<std::size_t>(index));
  Station station{};
  station.id = (genre + 1) * kIdsPerGenre + index;
  station.genre = genre;
  station.mood = names.mood;
  station.tone = (index * 7 + genre * 3) % kTones;
  station.listeners = 4000 / (index + 2) + (genre * 37 + index * 11) % 60;
  station.western = western;
  station.name = western ? toWestern(name) : name;
  station.mount = lower(names.key) + "-" + std::to_string(index);
  return station;
}

std::vector<std::string> split(std::string_view words) {
  std::vector<std::string> result;
  std::string word;
  for (char c : words) {
    if (c != ' ' && c != '+') {
      word += c;
    } else if (!word.empty()) {
      result.push_back(std::exchange(word, {}));
    }
  }
  if (!word.empty()) result.push_back(word);
  return result;
}

std::vector<const Station*> best(const std::vector<Station>& stations, int max_kbit,
                                 std::size_t limit,
                                 const std::function<bool(const Station&)>& wanted) {
  std::vector<const Station*> found;
  for (const Station& station : stations)
    if (station.format().kbit <= max_kbit && wanted(station)) found.push_back(&station);
  std::stable_sort(found.begin(), found.end(),
                   [](const Station* a, const Station* b) { return a->listeners > b->listeners; });
  found.resize(std::min(found.size(), limit));
  return found;
}

}  // namespace

World::World(int stations_per_genre) : per_genre_(std::min(stations_per_genre, kIdsPerGenre)) {
  for (int genre = 0; genre < static_cast<int>(kGenreCount); ++genre)
    for (int index = 0; index < per_genre_; ++index) stations_.push_back(makeStation(genre, index));
}

const Station* World::byId(int id) const {
  const auto found = std::find_if(stations_.begin(), stations_.end(),
                                  [&](const Station& station) { return station.id == id; });
  return found == stations_.end() ? nullptr : &*found;
}

const Station* World::byMount(std::string_view mount) const {
  const auto found = std::find_if(stations_.begin(), stations_.end(),
                                  [&](const Station& station) { return station.mount == mount; });
  return found == stations_.end() ? nullptr : &*found;
}

std::vector<const Station*> World::genre(std::string_view key, int max_kbit,
                                         std::size_t limit) const {
  if (key == "TopTen")
    return best(stations_, max_kbit, std::min<std::size_t>(limit, 25),
                [](const Station&) { return true; });
  return best(stations_, max_kbit, limit, [&](const Station& station) {
    return kGenres[static_cast<std::size_t>(station.genre)].key == key;
  });
}

std::vector<const Station*> World::search(std::string_view words, int max_kbit,
                                          std::size_t limit) const {
  const std::vector<std::string> wanted = split(lower(words));
  return best(stations_, max_kbit, limit, [&](const Station& station) {
    const GenreNames& names = kGenres[static_cast<std::size_t>(station.genre)];
    const std::string text =
        lower(station.name + " " + std::string(names.key) + " " + std::string(names.caption));
    return std::any_of(wanted.begin(), wanted.end(), [&](const std::string& word) {
      return text.find(word) != std::string::npos;
    });
  });
}

std::string songTitle(const Station& station, std::uint64_t song) {
  const GenreNames& genre = kGenres[static_cast<std::size_t>(station.genre)];
  const auto seed = static_cast<std::uint64_t>(station.id) + song;
  const std::string title = std::string(genre.artists[seed % genre.artists.size()]) + " - " +
                            std::string(kSongs[(seed * 5) % kSongs.size()]);
  return station.western ? toWestern(title) : title;
}

}  // namespace demo_radio
