#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace engine {

/// Length of the ID3v2 tag at the start of the bytes (which may be cut), 0 without
/// one. Ten bytes are enough to tell.
size_t id3Length(std::span<const uint8_t> bytes);

/// The title in a whole ID3v2.3 or 2.4 tag, "artist - title" in UTF-8; empty when it
/// names neither.
std::string id3Title(std::span<const uint8_t> tag);

}  // namespace engine
