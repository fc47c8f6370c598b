#include "tray/playlist.h"

#include <cstdint>
#include <limits>
#include <utility>

#include "base/files.h"
#include "base/text.h"

namespace tray {
namespace {

// Streams are counted in 16 bits.
constexpr std::size_t kMostStreams = std::numeric_limits<std::int16_t>::max();

constexpr std::string_view kStreamSeparator = "+#,";

// Between the first and the second "=": an address with one in it is cut there.
bool plsUrl(std::string_view line, std::string_view& url) {
  if (base::findIgnoringCase(line, "file") == line.npos) return false;
  const auto value = base::splitFirst(line, '=').value;
  if (!value) return false;
  url = base::splitFirst(*value, '=').key;
  return true;
}

bool m3uUrl(std::string_view line, std::string_view& url) {
  url = line;
  return line.size() > 2 && line.front() != '#';
}

}  // namespace

std::vector<std::string_view> playlistUrls(std::string_view text, std::string_view extension) {
  const bool pls = base::equalsIgnoringCase(extension, "pls");
  std::vector<std::string_view> urls;
  if (!pls && !base::equalsIgnoringCase(extension, "m3u")) return urls;
  base::Lines lines(text);
  for (std::string_view line; urls.size() < kMostStreams && lines.next(line);) {
    std::string_view url;
    if (pls ? plsUrl(line, url) : m3uUrl(line, url)) urls.push_back(url);
  }
  return urls;
}

void Playlist::playlisteinlesen(std::string path) {
  if (path.size() < 2) {
    path.clear();
    for (const char* saved : {"\\tmpdata.m3u", "\\tmpdata.pls"}) {
      if (base::fileExists(paths_.inData(saved))) path = paths_.inData(saved);
    }
  }
  const bool found = !path.empty();
  if (found) {
    const std::string text = base::readWhole(path).value_or(std::string());
    setEntries(playlistUrls(text, base::behindLast(path, '.')));
  }
  tree_.subplayerplay.Enabled = found;
  tree_.subplayerstop.Enabled = found;
  tree_.substream[0].Checked = true;
}

void Playlist::setEntries(const std::vector<std::string_view>& urls) {
  menu::MenuArray& substream = tree_.substream;
  substream.unloadAbove(0);
  std::string joined;
  int number = 0;
  for (const std::string_view url : urls) {
    menu::MenuItem& entry = number == 0 ? substream[0] : substream.load();
    entry.Caption = messages_.msgstream + ' ' + std::to_string(++number);
    entry.Tag = url;
    entry.Visible = true;
    joined.append(url).append(kStreamSeparator);
  }
  streamlist_.clear();
  if (!joined.empty()) {
    const auto streams = base::split(joined, kStreamSeparator);
    streamlist_.assign(streams.begin(), streams.end());
  }
  // A choice of one is none.
  tree_.subplayerstream.Visible = number > 1;
}

}  // namespace tray
