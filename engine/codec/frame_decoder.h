#pragma once

#include <vector>

#include "engine/abi/plugin.h"
#include "engine/codec/codec_objects.h"

namespace engine {

/// Decodes a bare stream of frames (no container) with one of FFmpeg's decoders.
/// Finds the next good frame after any damage. One thread.
class FrameDecoder {
 public:
  /// Null without memory or that decoder.
  static FrameDecoder* make(AVCodecID codec, const kestrel_input& input);

  FrameDecoder(const FrameDecoder&) = delete;
  FrameDecoder& operator=(const FrameDecoder&) = delete;

  /// As kestrel_codec::decode.
  int decode(kestrel_sound* sound);

 private:
  explicit FrameDecoder(const kestrel_input& input) : input_(input) {}
  bool nextPacket();

  kestrel_input input_;
  Owned<AVCodecContext> context_;
  Owned<AVCodecParserContext> parser_;
  Owned<AVPacket> packet_;
  Owned<AVFrame> frame_;
  std::vector<uint8_t> bytes_;  ///< read from the input, padded as the parser wants it
  int at_ = 0;                  ///< the parser's place in them
  int end_ = 0;
  std::vector<float> interleaved_;
};

/// The last three functions of a kestrel_codec whose decoder is a FrameDecoder.
template <AVCodecID kCodec>
void* openFrames(const kestrel_input* input) noexcept {
  try {
    return FrameDecoder::make(kCodec, *input);
  } catch (...) {
    return nullptr;
  }
}
int decodeFrames(void* decoder, kestrel_sound* sound) noexcept;
void closeFrames(void* decoder) noexcept;

}  // namespace engine
