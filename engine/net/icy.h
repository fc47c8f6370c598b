#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace engine {

/// Head of a server's answer, "HTTP/1.0 200 OK" or "ICY 200 OK" and its lines.
struct ResponseHead {
  std::string status_line;
  int status = 0;
  std::vector<std::string> lines;  ///< "name:value", names as sent, no space after the colon

  /// Value of the first line of that name (any case), empty without one.
  std::string_view value(std::string_view name) const;
  /// That value as a number; nothing unless it is digits only and at most 9 of them.
  std::optional<uint32_t> number(std::string_view name) const;
  /// All lines whose name begins with "icy-" (any case), each ended by a zero, and
  /// one more zero. Empty without such a line.
  std::string icyTags() const;
};

/// Length of the head with its empty line at the start of `bytes`; 0: not all here.
size_t headLength(std::string_view bytes);

/// Nothing when the text is not an answer of a web or radio server.
std::optional<ResponseHead> parseHead(std::string_view text);

/// Takes the titles out of a stream: after every `interval` bytes of sound comes a
/// length byte (in 16s) and that much text, padded with zeros.
class IcyReader {
 public:
  using Sound = std::function<void(const uint8_t* bytes, size_t length)>;
  using Title = std::function<void(const std::string& block)>;

  /// interval 0: a stream without titles.
  explicit IcyReader(uint32_t interval) : interval_(interval), left_(interval) {}

  uint32_t interval() const { return interval_; }
  /// Hands on sound and title blocks (with the zeros behind their text) in the
  /// stream's order. A block that is no "name=…" text is sound (a server that lies
  /// about its interval).
  void feed(const uint8_t* bytes, size_t length, const Sound& sound, const Title& title);

 private:
  void endBlock(const Sound& sound, const Title& title);

  uint32_t interval_;
  uint32_t left_;               ///< bytes of sound before the next length byte
  std::vector<uint8_t> block_;  ///< length byte and text so far
};

}  // namespace engine
