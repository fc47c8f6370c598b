#pragma once

#include "engine/abi/plugin.h"

namespace engine {

/// MPEG audio, the one codec that needs no plug-in.
extern const kestrel_codec kMpegAudio;

}  // namespace engine
