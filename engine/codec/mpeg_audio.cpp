#include "engine/codec/mpeg_audio.h"

#include "engine/codec/frame_decoder.h"
#include "engine/codec/frame_headers.h"

namespace engine {
namespace {

int recognise(const uint8_t* head, int length, kestrel_format* format) {
  return recogniseFrames({head, static_cast<size_t>(length)}, mpegAudioHeader, format);
}

}  // namespace

// The layer III decoder plays the lower layers too.
const kestrel_codec kMpegAudio = {recognise, openFrames<AV_CODEC_ID_MP3>, decodeFrames,
                                  closeFrames};

}  // namespace engine
