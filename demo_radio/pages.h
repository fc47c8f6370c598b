#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "demo_radio/world.h"

namespace demo_radio {

/// The directory's result page. Links to playlists stand on it as its clients
/// look for them: six characters of path, the file name they know, the rest of the
/// address up to the closing quote; the next anchor's text is the station's name.
std::string directoryPage(const std::vector<const Station*>& stations, const std::string& heading);

/// A directory page of 20,000 stations, padded to 64 MiB.
std::string hugeDirectoryPage(const World& world);

/// A page that belongs to no directory.
std::string unrelatedPage(const std::string& heading);

/// Playlists of the station's stream and its relays, 3 to 6 addresses. `host` is
/// "name:port".
std::string plsPlaylist(const Station& station, const std::string& host);
std::string m3uPlaylist(const Station& station, const std::string& host);

}  // namespace demo_radio
