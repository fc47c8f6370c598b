#pragma once

#include <array>
#include <memory>

#include "engine/hls/hls_playlist.h"
#include "engine/net/byte_source.h"

struct AVAES;

namespace engine {

/// The bytes of a file or a piece of one, decrypted. What breaks off is asked for again
/// from there. One thread.
class HlsSegmentReader {
 public:
  explicit HlsSegmentReader(const Interrupt& interrupt) : interrupt_(interrupt) {}

  /// `base` is what the addresses are relative to. Fetches the key first where there
  /// is one (not null) that was not used last; `number` goes into the decryption.
  [[nodiscard]] NetError open(const Url& base, const HlsFile& file, const HlsKey* key,
                              uint64_t number);
  /// Waits for at least one byte, into room for at least 16. `got` 0 without an error:
  /// the end.
  [[nodiscard]] NetError read(uint8_t* to, size_t room, size_t& got);
  void close();
  bool isOpen() const { return is_open_; }

 private:
  static constexpr size_t kBlock = 16;
  struct FreeCipher {
    void operator()(AVAES* cipher) const;
  };

  NetError loadKey(const Url& base, const HlsKey& key);
  NetError ask();
  NetError readSource(uint8_t* to, size_t room, size_t& got);
  NetError readOnce(uint8_t* to, size_t room, size_t& got);
  NetError readEncrypted(uint8_t* to, size_t room, size_t& got);

  const Interrupt& interrupt_;
  bool is_open_ = false;
  Url url_;
  ByteRange piece_;
  uint64_t taken_ = 0;                  ///< of the piece
  std::unique_ptr<ByteSource> source_;  ///< null between two connections
  uint64_t skip_ = 0;  ///< bytes before what is wanted, from a server that gives only all
  std::optional<uint64_t> left_;  ///< to come; unknown from a server that does not tell
  std::string key_address_;
  std::string key_;
  std::unique_ptr<AVAES, FreeCipher> cipher_;  ///< null for a plain segment
  std::array<uint8_t, kBlock> vector_{};
  std::vector<uint8_t> encrypted_;
};

}  // namespace engine
