#pragma once

#include <vector>

#include "engine/plugin.h"

struct AVFrame;

namespace engine {

/// Brings one of FFmpeg's decoded frames, of whichever sample format, to the form of
/// kestrel_sound; `samples` holds it. False for a frame that is no sound.
bool takeFrame(const AVFrame& frame, std::vector<float>& samples, kestrel_sound* sound);

}  // namespace engine
