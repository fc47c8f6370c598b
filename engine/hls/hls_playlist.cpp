#include "engine/hls/hls_playlist.h"

#include <algorithm>
#include <map>

#include "engine/text/any_case.h"
#include "engine/text/playlist.h"

namespace engine {
namespace {

// More than sound ever needs; the rest of such a list of qualities is for pictures.
constexpr uint32_t kMostBandwidth = 600'000;
constexpr double kLongestTarget = 3600;
// Far more than a day, in pieces of a second.
constexpr size_t kMostSegments = 200'000;
// What variables may make of a list, in bytes: a small one could name a gigabyte.
constexpr size_t kMostExpanded = 4 << 20;

uint64_t numberIn(std::string_view text) {
  uint64_t number = 0;
  for (const char c : text.substr(0, 18)) {
    if (c < '0' || c > '9') break;
    number = number * 10 + static_cast<uint64_t>(c - '0');
  }
  return number;
}

// Where a quoted text ends; some servers write quotes within as \".
size_t quoteEnd(std::string_view text) {
  size_t end = text.find('"');
  while (end != text.npos && end > 0 && text[end - 1] == '\\') end = text.find('"', end + 1);
  return end;
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
    const size_t end = std::min(quoted ? quoteEnd(list) : list.find(','), list.size());
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

std::shared_ptr<const HlsKey> readKey(std::string_view attributes) {
  const std::string_view method = attribute(attributes, "METHOD");
  if (method == "NONE") return nullptr;
  HlsKey key;
  key.method = method == "AES-128" ? HlsKey::Method::aes128 : HlsKey::Method::unknown;
  key.address = attribute(attributes, "URI");
  key.iv = hexBytes(attribute(attributes, "IV"));
  return std::make_shared<const HlsKey>(std::move(key));
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

// "length" or "length@from"; without a start it is `next`. Nothing for an empty range.
std::optional<ByteRange> byteRange(std::string_view text, uint64_t next) {
  const size_t at = text.find('@');
  const uint64_t length = numberIn(text);
  if (length == 0) return std::nullopt;
  return ByteRange{at == text.npos ? next : numberIn(text.substr(at + 1)), length};
}

std::string unquoted(std::string_view text) {
  std::string plain;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && text.substr(i + 1).starts_with('"')) continue;
    plain += text[i];
  }
  return plain;
}

// Whether a text that may be anything is "artist - title".
bool isTitle(std::string_view text) {
  const size_t dash = text.find(" - ");
  if (dash == text.npos || text.find("://") != text.npos) return false;
  const auto has_letter = [](std::string_view part) {
    return std::any_of(part.begin(), part.end(), [](char c) {
      return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c & 0x80) != 0;
    });
  };
  const auto endings = {".ts", ".aac", ".mp3", ".mp4", ".m4s", ".m4a", ".m3u8", ".wav"};
  const bool file = std::any_of(endings.begin(), endings.end(), [&](std::string_view ending) {
    return text.size() > ending.size() &&
           startsWithAnyCase(text.substr(text.size() - ending.size()), ending);
  });
  return !file && has_letter(text.substr(0, dash)) && has_letter(text.substr(dash + 3));
}

// The title behind a segment's length: "10,title="…",artist="…"", or a plain text,
// which may also be a file's name or a remark.
std::string segmentTitle(std::string_view value) {
  const size_t comma = value.find(',');
  if (comma == value.npos) return {};
  const std::string_view text = value.substr(comma + 1);
  const std::string title = unquoted(attribute(text, "title"));
  const std::string artist = unquoted(attribute(text, "artist"));
  const auto blank = [](const std::string& one) {
    return one.find_first_not_of(' ') == one.npos || one == "-";
  };
  // Advertising systems put records of their own there.
  if (title.find("=\"") != title.npos) return {};
  if (!blank(title)) return blank(artist) ? title : artist + " - " + title;
  return text.find("=\"") == text.npos && isTitle(text) ? std::string(text) : std::string();
}

/// Reads line by line; what a tag says holds for the addresses after it.
class Reader {
 public:
  void read(std::string_view line) {
    const auto expanded = expand(line);
    if (expanded) line = *expanded;
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
      if (list_.segments.empty()) number_ = numberIn(value);
    } else if (name == "#EXT-X-SKIP") {
      if (list_.segments.empty()) number_ += numberIn(attribute(value, "SKIPPED-SEGMENTS"));
    } else if (name == "#EXTINF") {
      next_.title = segmentTitle(value);
    } else if (name == "#EXT-X-KEY") {
      next_.key = readKey(value);
    } else if (name == "#EXT-X-MAP") {
      readMap(value);
    } else if (name == "#EXT-X-DISCONTINUITY") {
      next_.discontinuity = true;
    } else if (name == "#EXT-X-BYTERANGE") {
      range_ = value;
    } else if (name == "#EXT-X-GAP") {
      next_.gap = true;
    } else if (name == "#EXT-X-DEFINE") {
      define(value);
    } else if (name == "#EXT-X-ENDLIST") {
      list_.ended = true;
    }
  }

  void readMedia(std::string_view value) {
    if (attribute(value, "TYPE") != "AUDIO") return;
    const std::string_view address = attribute(value, "URI");
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
    if (list_.segments.size() == kMostSegments) return;
    const bool follows = next_.file.address == address;
    next_.file = {std::string(address), rangeAfter(follows ? next_.file.range : ByteRange())};
    next_.number = number_++;
    list_.segments.push_back(next_);
    next_.discontinuity = false;
    next_.gap = false;
    next_.title.clear();
    range_.reset();
  }

  ByteRange rangeAfter(const ByteRange& last) {
    if (!range_) return {};
    const auto range = byteRange(*range_, last.from + last.length);
    next_.gap = next_.gap || !range;
    return range.value_or(ByteRange());
  }

  void readMap(std::string_view value) {
    const std::string_view range = attribute(value, "BYTERANGE");
    const HlsFile file{std::string(attribute(value, "URI")),
                       byteRange(range, 0).value_or(ByteRange())};
    next_.map =
        file.address.empty() ? nullptr : std::make_shared<const HlsMap>(HlsMap{file, next_.key});
  }

  void define(std::string_view value) {
    const std::string_view name = attribute(value, "NAME");
    // Values from the list's address or from the list above it.
    if (name.empty()) {
      list_.foreign = true;
    } else {
      variables_["{$" + std::string(name) + "}"] = attribute(value, "VALUE");
    }
  }

  // The line with its variables' values; nothing when it has none.
  std::optional<std::string> expand(std::string_view line) {
    if (variables_.empty() || line.find("{$") == line.npos) return std::nullopt;
    std::string text;
    for (size_t at = 0; !list_.foreign && (at = line.find("{$")) != line.npos;) {
      const std::string_view rest = line.substr(at);
      const std::string_view name = rest.substr(0, rest.find('}') + 1);
      const auto value = variables_.find(std::string(name));
      if (value == variables_.end()) {
        list_.foreign = true;
        break;
      }
      text.append(line.substr(0, at)).append(value->second);
      line.remove_prefix(at + name.size());
      list_.foreign = expanded_ + text.size() > kMostExpanded;
    }
    text += line;
    expanded_ += text.size();
    return text;
  }

  HlsPlaylist list_;
  std::optional<HlsVariant> variant_;
  HlsSegment next_;  ///< its key and map hold until others are named
  std::optional<std::string> range_;
  uint64_t number_ = 0;
  std::map<std::string, std::string> variables_;  ///< by "{$name}"
  size_t expanded_ = 0;                           ///< bytes that these brought
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
  return sound != nullptr && !sound->address.empty() ? sound->address : best->address;
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
