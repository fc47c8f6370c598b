#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/net/byte_range.h"

namespace engine {

/// HTTP Live Streaming's lists (RFC 8216), as far as sound needs them. Addresses are
/// as written, relative ones too.

struct HlsKey {
  enum class Method { none, aes128, unknown } method = Method::none;
  std::string address;
  std::optional<std::array<uint8_t, 16>> iv;  ///< else the segment's number
};

struct HlsFile {
  std::string address;
  ByteRange range;
  bool operator==(const HlsFile&) const = default;
};

/// What goes before segments so that they can be understood.
struct HlsMap {
  HlsFile file;
  std::shared_ptr<const HlsKey> key;  ///< null: plain
};

/// Keys and maps hold for many segments, which share them.
struct HlsSegment {
  HlsFile file;
  uint64_t number = 0;                ///< that the server counts on with
  bool discontinuity = false;         ///< does not go on where the one before ended
  bool gap = false;                   ///< is not to be had
  std::shared_ptr<const HlsKey> key;  ///< null: plain
  std::shared_ptr<const HlsMap> map;  ///< null without
  std::string title;                  ///< "artist - title" as the list tells it, or empty
};

struct HlsVariant {
  std::string address;
  uint32_t bandwidth = 0;  ///< bit/s
  bool video = false;
  std::string audio;  ///< name of the group that its sound is in
};

/// A rendition of sound.
struct HlsAudio {
  std::string group;
  std::string address;  ///< of its list; empty: it is in the variant's own
  bool preferred = false;
};

struct HlsPlaylist {
  std::vector<HlsVariant> variants;  ///< a master list when there are any
  std::vector<HlsAudio> audio;
  std::vector<HlsSegment> segments;
  double target_seconds = 0;  ///< the longest segment
  bool ended = false;         ///< no segments will be added
  bool foreign = false;       ///< needs what stands in other lists: cannot be played

  /// Of a master list, the list to play: the best sound among those without a
  /// picture, or else the sound of the least demanding one. Empty without any.
  std::string choice() const;
};

/// Nothing unless the text is such a list, with variants or a target duration.
std::optional<HlsPlaylist> parseHls(std::string_view text);

}  // namespace engine
