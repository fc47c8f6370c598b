#pragma once

#include "engine/abi/plugin.h"

namespace engine {

/// Ogg Vorbis, Ogg Opus and Ogg FLAC, chained or not.
extern const kestrel_codec kOggAudio;
/// FLAC by itself.
extern const kestrel_codec kFlacAudio;

}  // namespace engine
