#include "engine/codec/frame_headers.h"

#include "engine/abi/bass.h"
#include "engine/codec/id3.h"

namespace engine {
namespace {

constexpr int kFramesInRow = 3;
// Without a row of frames this far in, it is something else.
constexpr size_t kFarEnough = 8 * 1024;

// kbit/s by version (1; 2 and 2.5), layer and index of the header.
constexpr uint16_t kBitrates[2][3][15] = {
    {{0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},
     {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},
     {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320}},
    {{0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},
     {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160},
     {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}}};
constexpr uint32_t kMpegRates[3] = {44100, 48000, 32000};
constexpr uint32_t kLayerTypes[3] = {BASS_CTYPE_STREAM_MP1, BASS_CTYPE_STREAM_MP2,
                                     BASS_CTYPE_STREAM_MP3};
constexpr uint32_t kAdtsRates[13] = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                     22050, 16000, 12000, 11025, 8000,  7350};

class BitReader {
 public:
  explicit BitReader(std::span<const uint8_t> bytes) : bytes_(bytes) {}
  /// Zeros behind the end.
  uint32_t take(unsigned bits) {
    uint32_t value = 0;
    for (; bits != 0; --bits, ++at_) {
      const unsigned byte = at_ / 8 < bytes_.size() ? bytes_[at_ / 8] : 0;
      value = value << 1 | (byte >> (7 - at_ % 8) & 1u);
    }
    return value;
  }
  /// A number that is told with its own size.
  uint32_t takeSized() { return take(8 * (take(2) + 1)); }

 private:
  std::span<const uint8_t> bytes_;
  size_t at_ = 0;
};

uint32_t samplesPerFrame(uint32_t layer_index, bool version1) {
  if (layer_index == 0) return 384;
  return layer_index == 2 && !version1 ? 576 : 1152;
}

}  // namespace

std::optional<FrameHeader> mpegAudioHeader(std::span<const uint8_t> bytes) {
  if (bytes.size() < 4 || bytes[0] != 0xff || (bytes[1] & 0xe0) != 0xe0) return std::nullopt;
  const uint32_t version = bytes[1] >> 3 & 3u;  // 0: 2.5, 1: reserved, 2: 2, 3: 1
  const uint32_t layer_code = bytes[1] >> 1 & 3u;
  const uint32_t bitrate_index = bytes[2] >> 4;
  const uint32_t rate_index = bytes[2] >> 2 & 3u;
  if (version == 1 || layer_code == 0 || bitrate_index == 0 || bitrate_index == 15 ||
      rate_index == 3) {
    return std::nullopt;
  }
  const bool version1 = version == 3;
  const uint32_t layer = 3 - layer_code;  // 0, 1, 2 for I, II, III
  const uint32_t padding = bytes[2] >> 1 & 1u;
  const uint32_t bitrate = kBitrates[version1 ? 0 : 1][layer][bitrate_index] * 1000u;

  FrameHeader header;
  header.ctype = kLayerTypes[layer];
  header.rate = kMpegRates[rate_index] >> (version == 0 ? 2 : version1 ? 0 : 1);
  header.channels = (bytes[3] >> 6) == 3 ? 1 : 2;
  header.samples = samplesPerFrame(layer, version1);
  header.length = layer == 0 ? (12 * bitrate / header.rate + padding) * 4
                             : header.samples / 8 * bitrate / header.rate + padding;
  return header;
}

std::optional<FrameHeader> adtsHeader(std::span<const uint8_t> bytes) {
  if (bytes.size() < 6 || bytes[0] != 0xff || (bytes[1] & 0xf6) != 0xf0) return std::nullopt;
  const uint32_t rate_index = bytes[2] >> 2 & 15u;
  if (rate_index >= std::size(kAdtsRates)) return std::nullopt;
  FrameHeader header;
  header.ctype = BASS_CTYPE_STREAM_AAC;
  header.rate = kAdtsRates[rate_index];
  header.channels = (bytes[2] & 1u) << 2 | bytes[3] >> 6;
  header.samples = 1024;
  header.length = (bytes[3] & 3u) << 11 | static_cast<uint32_t>(bytes[4]) << 3 | bytes[5] >> 5;
  if (header.length < 7) return std::nullopt;
  return header;
}

std::optional<FrameHeader> loasHeader(std::span<const uint8_t> bytes) {
  BitReader bits(bytes);
  if (bytes.size() < 16 || bits.take(11) != 0x2b7) return std::nullopt;
  FrameHeader header;
  header.ctype = BASS_CTYPE_STREAM_AAC;
  header.samples = 1024;
  header.length = bits.take(13) + 3;
  if (bits.take(1) != 0) return header;  // set up as the last one
  const bool version1 = bits.take(1) != 0;
  if (version1 && bits.take(1) != 0) return std::nullopt;
  if (version1) bits.takeSized();
  bits.take(1);
  header.samples *= bits.take(6) + 1;
  if (bits.take(7) != 0) return std::nullopt;  // several programs
  if (version1) bits.takeSized();
  if (const uint32_t object = bits.take(5); object == 0 || object == 31) return std::nullopt;
  const uint32_t rate_index = bits.take(4);
  if (rate_index >= std::size(kAdtsRates)) return std::nullopt;
  header.rate = kAdtsRates[rate_index];
  header.channels = bits.take(4);
  return header;
}

int recogniseFrames(std::span<const uint8_t> head,
                    std::optional<FrameHeader> (*header)(std::span<const uint8_t>),
                    kestrel_format* format) {
  const size_t start = id3Length(head);
  for (size_t from = start; from < head.size() && from < start + kFarEnough; ++from) {
    const auto first = header(head.subspan(from));
    if (!first || first->rate == 0) continue;
    uint64_t bytes = 0;
    uint32_t frames = 0;
    size_t at = from;
    for (; at < head.size(); ++frames) {
      const auto next = header(head.subspan(at));
      if (!next || next->ctype != first->ctype) break;
      if (next->rate != 0 && next->rate != first->rate) break;
      at += next->length;
      bytes += next->length;
    }
    if (frames < kFramesInRow) continue;
    format->ctype = first->ctype;
    format->rate = first->rate;
    format->channels = first->channels;
    format->bitrate =
        static_cast<uint32_t>(bytes * 8 * first->rate / (uint64_t{frames} * first->samples));
    return KESTREL_YES;
  }
  return head.size() < start + kFarEnough ? KESTREL_MORE : KESTREL_NO;
}

}  // namespace engine
