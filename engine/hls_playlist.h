#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

/// HTTP Live Streaming's lists (RFC 8216), as far as sound needs them. Addresses are
/// as written, relative ones too.

struct HlsKey {
  enum class Method { none, aes128, unknown } method = Method::none;
  std::string address;
  std::optional<std::array<uint8_t, 16>> iv;  ///< else the segment's number
};

struct HlsSegment {
  std::string address;
  uint64_t number = 0;         ///< that the server counts on with
  bool discontinuity = false;  ///< does not go on where the one before ended
  bool part = false;           ///< a piece of the file only
  HlsKey key;
  std::string map;  ///< address of what goes before it, empty without
};

struct HlsVariant {
  std::string address;
  uint32_t bandwidth = 0;  ///< bit/s
  bool video = false;
  std::string audio;  ///< name of the group that its sound is in
};

/// A rendition of sound with a list of its own.
struct HlsAudio {
  std::string group, address;
  bool preferred = false;
};

struct HlsPlaylist {
  std::vector<HlsVariant> variants;  ///< a master list when there are any
  std::vector<HlsAudio> audio;
  std::vector<HlsSegment> segments;
  double target_seconds = 0;  ///< the longest segment
  bool ended = false;         ///< no segments will be added

  /// Of a master list, the list to play: the best sound among those without a
  /// picture, or else the sound of the least demanding one. Empty without any.
  std::string choice() const;
};

/// Nothing unless the text is such a list, with variants or a target duration.
std::optional<HlsPlaylist> parseHls(std::string_view text);

}  // namespace engine
