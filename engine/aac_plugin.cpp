#include "engine/frame_decoder.h"
#include "engine/frame_headers.h"
#include "engine/plugin.h"

#if defined(_WIN32)
#define EXPORTED
#else
#define EXPORTED __attribute__((visibility("default")))
#endif

namespace {

int recognise(const uint8_t* head, int length, kestrel_format* format) {
  return engine::recogniseFrames({head, static_cast<size_t>(length)}, engine::adtsHeader, format);
}

const kestrel_codec kCodecs[] = {
    {recognise, engine::openFrames<AV_CODEC_ID_AAC>, engine::decodeFrames, engine::closeFrames}};
const kestrel_plugin kPlugin = {KESTREL_PLUGIN_VERSION, 1, kCodecs};

}  // namespace

extern "C" EXPORTED const kestrel_plugin* kestrel_plugin_get(void) {
  return &kPlugin;
}
