#pragma once

#include <cstdint>
#include <span>

#include "engine/abi/plugin.h"

namespace engine {

/// A codec's recogniser for Ogg streams with Vorbis, Opus or FLAC inside (RFC 3533,
/// RFC 7845, Vorbis I, the FLAC-to-Ogg mapping).
int recogniseOgg(std::span<const uint8_t> head, kestrel_format* format);

/// The same for FLAC by itself (RFC 9639), after an ID3 tag or not.
int recogniseFlac(std::span<const uint8_t> head, kestrel_format* format);

}  // namespace engine
