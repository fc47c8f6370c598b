#include "engine/codec/container_audio.h"

#include "engine/codec/container_decoder.h"
#include "engine/codec/container_headers.h"

namespace engine {
namespace {

int recogniseOggBytes(const uint8_t* head, int length, kestrel_format* format) {
  return recogniseOgg({head, static_cast<size_t>(length)}, format);
}

int recogniseFlacBytes(const uint8_t* head, int length, kestrel_format* format) {
  return recogniseFlac({head, static_cast<size_t>(length)}, format);
}

}  // namespace

const kestrel_codec kOggAudio = {recogniseOggBytes, openContainer<ContainerDecoder::Kind::ogg>,
                                 decodeContainer, closeContainer};
const kestrel_codec kFlacAudio = {recogniseFlacBytes, openContainer<ContainerDecoder::Kind::flac>,
                                  decodeContainer, closeContainer};

}  // namespace engine
