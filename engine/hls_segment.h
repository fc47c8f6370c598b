#pragma once

#include <array>
#include <memory>

#include "engine/byte_source.h"
#include "engine/hls_playlist.h"

struct AVAES;

namespace engine {

/// One segment's bytes, decrypted. One thread.
class HlsSegmentReader {
 public:
  explicit HlsSegmentReader(const Interrupt& interrupt) : interrupt_(interrupt) {}

  /// `base` is what the segment's addresses are relative to. Fetches the key first
  /// where there is one that was not used last.
  [[nodiscard]] NetError open(const Url& base, const HlsSegment& segment);
  /// Waits for at least one byte, into room for at least 16. `got` 0 without an error:
  /// the end.
  [[nodiscard]] NetError read(uint8_t* to, size_t room, size_t& got);
  void close() { source_.reset(); }
  bool isOpen() const { return source_ != nullptr; }

 private:
  static constexpr size_t kBlock = 16;
  struct FreeCipher {
    void operator()(AVAES* cipher) const;
  };

  NetError loadKey(const Url& base, const HlsKey& key);
  NetError readEncrypted(uint8_t* to, size_t room, size_t& got);

  const Interrupt& interrupt_;
  std::unique_ptr<ByteSource> source_;
  std::string key_address_;
  std::string key_;
  std::unique_ptr<AVAES, FreeCipher> cipher_;  ///< null for a plain segment
  std::array<uint8_t, kBlock> vector_{};
  std::vector<uint8_t> encrypted_;
};

}  // namespace engine
