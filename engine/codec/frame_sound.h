#pragma once

#include <cstdint>
#include <vector>

extern "C" {
#include <libavcodec/codec_id.h>
}

#include "engine/abi/plugin.h"

struct AVFrame;

namespace engine {

/// Brings one of FFmpeg's decoded frames, of whichever sample format, to the form of
/// kestrel_sound; `samples` holds it, `codec` is what it was in. False for a frame that is no
/// sound.
bool takeFrame(const AVFrame& frame, AVCodecID codec, std::vector<float>& samples,
               kestrel_sound* sound);

}  // namespace engine
