#pragma once

#include <memory>
#include <vector>

#include "engine/abi/plugin.h"
#include "engine/codec/codec_objects.h"
#include "engine/codec/demuxer.h"
#include "engine/codec/ogg_pages.h"

namespace engine {

/// Decodes sound in a container whose headers come first: Ogg (with Vorbis, Opus or
/// FLAC, link after link of a chain) and FLAC by itself. One thread.
class ContainerDecoder {
 public:
  enum class Kind { ogg, flac };
  ContainerDecoder(Kind kind, const kestrel_input& input);

  /// As kestrel_codec::decode.
  int decode(kestrel_sound* sound);

 private:
  bool nextLink();
  bool openLink();
  bool openDecoder(const AVStream& stream);
  void tellTitle(const AVStream& stream) const;
  bool feedDecoder();
  int readInput(uint8_t* to, int room);

  const Kind kind_;
  kestrel_input input_;
  bool ended_ = false;  ///< the input gives no more
  bool begun_ = false;
  OggPages pages_;
  std::unique_ptr<Demuxer> demuxer_;
  int stream_ = -1;
  Owned<AVCodecContext> context_;
  Owned<AVPacket> packet_;
  Owned<AVFrame> frame_;
  std::vector<float> samples_;
};

/// The last three functions of a kestrel_codec whose decoder is a ContainerDecoder.
template <ContainerDecoder::Kind kKind>
void* openContainer(const kestrel_input* input) noexcept {
  try {
    return new ContainerDecoder(kKind, *input);
  } catch (...) {
    return nullptr;
  }
}
int decodeContainer(void* decoder, kestrel_sound* sound) noexcept;
void closeContainer(void* decoder) noexcept;

}  // namespace engine
