#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "engine/codec/codecs.h"
#include "engine/download_buffer.h"

namespace engine {

/// Turns a stream's bytes into sound with the codec that fits, and with another from
/// where the server changes to that. Titles that a codec finds are marked in the
/// buffer. One thread.
class Decoding {
 public:
  /// Waits for bytes of the buffer, as kestrel_input::read.
  using Read = std::function<int(uint8_t* to, int room)>;

  /// `first` is the codec that knew the stream's beginning, `all` are those to try
  /// later on. The buffer outlives this.
  Decoding(const Codec& first, std::vector<Codec> all, DownloadBuffer& buffer, Read read);
  ~Decoding();
  Decoding(const Decoding&) = delete;
  Decoding& operator=(const Decoding&) = delete;

  /// False when the bytes have ended or the stream is being stopped.
  bool decode(kestrel_sound* sound);

 private:
  class Decoder;

  int feed(uint8_t* to, int room);
  int read(uint8_t* to, int room);
  void markTitle(const char* text);
  bool findOther();
  bool findNext();
  void forget();
  bool recogniseUnplayed(bool others_only);

  const std::vector<Codec> all_;
  DownloadBuffer& buffer_;
  const Read read_;
  const kestrel_input input_;
  Codec codec_;
  std::unique_ptr<Decoder> decoder_;
  const Codec* next_ = nullptr;    ///< of all_, once the present one is out of place
  size_t silence_ = 0;             ///< bytes read since the last sound
  std::vector<uint8_t> unplayed_;  ///< these, and a little before
  std::vector<uint8_t> again_;     ///< of these, what the next codec is to read first
  size_t again_taken_ = 0;
  uint64_t position_ = 0;     ///< that the codec has read to
  uint64_t least_begin_ = 0;  ///< where the next one may begin
  bool ended_ = false;
};

}  // namespace engine
