#include <iterator>

#include "engine/abi/plugin.h"
#include "engine/codec/frame_decoder.h"
#include "engine/codec/frame_headers.h"

#if defined(_WIN32)
#define EXPORTED
#else
#define EXPORTED __attribute__((visibility("default")))
#endif

namespace {

template <auto kHeader>
int recognise(const uint8_t* head, int length, kestrel_format* format) {
  return engine::recogniseFrames({head, static_cast<size_t>(length)}, kHeader, format);
}

const kestrel_codec kCodecs[] = {
    {recognise<engine::adtsHeader>, engine::openFrames<AV_CODEC_ID_AAC>, engine::decodeFrames,
     engine::closeFrames},
    {recognise<engine::loasHeader>, engine::openFrames<AV_CODEC_ID_AAC_LATM>, engine::decodeFrames,
     engine::closeFrames}};
const kestrel_plugin kPlugin = {KESTREL_PLUGIN_VERSION, std::size(kCodecs), kCodecs};

}  // namespace

extern "C" EXPORTED const kestrel_plugin* kestrel_plugin_get(void) {
  return &kPlugin;
}
