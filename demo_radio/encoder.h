#pragma once

#include <string>
#include <vector>

#include "demo_radio/palette.h"

namespace demo_radio {

/// Encodes a loop (interleaved samples) so that the result can be sent over and
/// over without a seam: whole frames that lean on no bits of earlier frames.
/// Throws std::runtime_error when the encoder is missing or fails.
std::string encodeLoop(const std::vector<float>& samples, const Format& format);

}  // namespace demo_radio
