#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "engine/abi/plugin.h"

namespace engine {

/// What the header of one frame of sound tells.
struct FrameHeader {
  uint32_t ctype = 0;
  uint32_t rate = 0;  ///< Hz
  uint32_t channels = 0;
  uint32_t samples = 0;  ///< per channel
  uint32_t length = 0;   ///< bytes, header included
};

/// MPEG 1, 2 and 2.5 audio, layers I to III (ISO/IEC 11172-3 and 13818-3). Needs 4
/// bytes. Free-format frames, whose length the header does not tell, are refused.
std::optional<FrameHeader> mpegAudioHeader(std::span<const uint8_t> bytes);

/// AAC in ADTS frames (ISO/IEC 13818-7). Needs 6 bytes.
std::optional<FrameHeader> adtsHeader(std::span<const uint8_t> bytes);

/// AAC in LOAS frames (ISO/IEC 14496-3), as MPEG-TS carries it. Not each of them tells
/// its rate: 0 stands for the same as before.
std::optional<FrameHeader> loasHeader(std::span<const uint8_t> bytes);

/// A codec's recogniser for streams of such frames, joined anywhere: some like
/// frames in a row, after an ID3 tag or the rest of a cut frame.
int recogniseFrames(std::span<const uint8_t> head,
                    std::optional<FrameHeader> (*header)(std::span<const uint8_t>),
                    kestrel_format* format);

}  // namespace engine
