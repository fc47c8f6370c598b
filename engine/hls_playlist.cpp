#include "engine/hls_playlist.h"

#include <algorithm>
#include <cmath>

#include "engine/any_case.h"
#include "engine/playlist.h"

namespace engine {
namespace {

// More than sound ever needs; the rest of such a list of qualities is for pictures.
constexpr uint32_t kMostBandwidth = 600'000;
constexpr double kLongestTarget = 3600;

uint64_t numberIn(std::string_view text) {
  uint64_t number = 0;
  for (const char c : text.substr(0, 18)) {
    if (c < '0' || c > '9') break;
    number = number * 10 + static_cast<uint64_t>(c - '0');
  }
  return number;
}

// Value of one of "NAME=value,NAME="quoted, value"", without quotes.
std::string_view attribute(std::string_view list, std::string_view name) {
  while (!list.empty()) {
    const size_t equals = list.find('=');
    if (equals == list.npos) break;
    std::string_view key = list.substr(0, equals);
    key.remove_prefix(std::min(key.find_first_not_of(" ,"), key.size()));
    list.remove_prefix(equals + 1);
    const bool quoted = list.starts_with('"');
    if (quoted) list.remove_prefix(1);
    const size_t end = std::min(list.find(quoted ? '"' : ','), list.size());
    if (key == name) return list.substr(0, end);
    list.remove_prefix(std::min(end + 1, list.size()));
  }
  return {};
}

std::optional<std::array<uint8_t, 16>> hexBytes(std::string_view text) {
  if (!startsWithAnyCase(text, "0x") || text.size() > 34) return std::nullopt;
  // Leading zeros may be left out.
  std::array<uint8_t, 16> bytes{};
  size_t nibble = 32 - (text.size() - 2);
  for (const char c : text.substr(2)) {
    const char digit = static_cast<char>(c | 32);
    const bool letter = digit >= 'a' && digit <= 'f';
    if (!letter && (c < '0' || c > '9')) return std::nullopt;
    const int value = letter ? digit - 'a' + 10 : c - '0';
    bytes[nibble / 2] = static_cast<uint8_t>(bytes[nibble / 2] << 4 | value);
    ++nibble;
  }
  return bytes;
}

HlsKey readKey(std::string_view attributes) {
  const std::string_view method = attribute(attributes, "METHOD");
  HlsKey key;
  if (method == "NONE") return key;
  key.method = method == "AES-128" ? HlsKey::Method::aes128 : HlsKey::Method::unknown;
  key.address = attribute(attributes, "URI");
  key.iv = hexBytes(attribute(attributes, "IV"));
  return key;
}

bool hasVideo(std::string_view attributes) {
  const std::string_view codecs = attribute(attributes, "CODECS");
  const auto names = {"avc", "hvc", "hev", "vp0", "av01", "mp4v", "dvh"};
  return !attribute(attributes, "RESOLUTION").empty() ||
         std::any_of(names.begin(), names.end(),
                     [&](const char* name) { return codecs.find(name) != codecs.npos; });
}

double secondsIn(std::string_view text) {
  return std::min(static_cast<double>(numberIn(text)), kLongestTarget);
}

/// Reads line by line; what a tag says holds for the addresses after it.
class Reader {
 public:
  void read(std::string_view line) {
    if (!line.starts_with('#')) return readAddress(line);
    const size_t colon = line.find(':');
    const std::string_view name = line.substr(0, colon);
    readTag(name, colon == line.npos ? std::string_view() : line.substr(colon + 1));
  }
  HlsPlaylist take() { return std::move(list_); }

 private:
  void readTag(std::string_view name, std::string_view value) {
    if (name == "#EXT-X-STREAM-INF") {
      variant_ = HlsVariant{{},
                            static_cast<uint32_t>(std::min<uint64_t>(
                                numberIn(attribute(value, "BANDWIDTH")), UINT32_MAX)),
                            hasVideo(value),
                            std::string(attribute(value, "AUDIO"))};
    } else if (name == "#EXT-X-MEDIA") {
      readMedia(value);
    } else if (name == "#EXT-X-TARGETDURATION") {
      list_.target_seconds = std::max(secondsIn(value), 1.0);
    } else if (name == "#EXT-X-MEDIA-SEQUENCE") {
      number_ = numberIn(value);
    } else if (name == "#EXT-X-KEY") {
      next_.key = readKey(value);
    } else if (name == "#EXT-X-MAP") {
      next_.map = attribute(value, "URI");
      map_is_part_ = !attribute(value, "BYTERANGE").empty();
    } else if (name == "#EXT-X-DISCONTINUITY") {
      next_.discontinuity = true;
    } else if (name == "#EXT-X-BYTERANGE") {
      next_.part = true;
    } else if (name == "#EXT-X-ENDLIST") {
      list_.ended = true;
    }
  }

  void readMedia(std::string_view value) {
    const std::string_view address = attribute(value, "URI");
    if (attribute(value, "TYPE") != "AUDIO" || address.empty()) return;
    list_.audio.push_back({std::string(attribute(value, "GROUP-ID")), std::string(address),
                           attribute(value, "DEFAULT") == "YES"});
  }

  void readAddress(std::string_view address) {
    if (variant_) {
      variant_->address = address;
      list_.variants.push_back(std::move(*variant_));
      variant_.reset();
      return;
    }
    next_.address = address;
    next_.number = number_++;
    list_.segments.push_back(next_);
    list_.segments.back().part = next_.part || map_is_part_;
    next_.discontinuity = false;
    next_.part = false;
  }

  HlsPlaylist list_;
  std::optional<HlsVariant> variant_;
  HlsSegment next_;  ///< its key and map hold until others are named
  bool map_is_part_ = false;
  uint64_t number_ = 0;
};

}  // namespace

std::string HlsPlaylist::choice() const {
  const HlsVariant* best = nullptr;
  for (const HlsVariant& each : variants) {
    // Sound only, within reason as good as it gets; else as little as possible.
    const auto rank = [](const HlsVariant& one) {
      const bool fits = !one.video && one.bandwidth <= kMostBandwidth;
      const double bandwidth = one.bandwidth;
      return fits ? bandwidth + 1 : -bandwidth - (one.video ? 1e10 : 0);
    };
    if (best == nullptr || rank(each) > rank(*best)) best = &each;
  }
  if (best == nullptr) return {};
  const HlsAudio* sound = nullptr;
  for (const HlsAudio& each : audio) {
    if (best->audio.empty() || each.group != best->audio) continue;
    if (sound == nullptr || (each.preferred && !sound->preferred)) sound = &each;
  }
  return sound != nullptr ? sound->address : best->address;
}

std::optional<HlsPlaylist> parseHls(std::string_view text) {
  const std::vector<std::string_view> lines = textLines(text);
  if (lines.empty() || !lines.front().starts_with("#EXTM3U")) return std::nullopt;
  Reader reader;
  for (const std::string_view line : lines) reader.read(line);
  HlsPlaylist list = reader.take();
  if (list.variants.empty() && list.target_seconds == 0) return std::nullopt;
  return list;
}

}  // namespace engine
