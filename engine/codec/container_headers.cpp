#include "engine/codec/container_headers.h"

#include <algorithm>
#include <string_view>

#include "engine/abi/bass.h"
#include "engine/codec/id3.h"

namespace engine {
namespace {

// The first pages of an Ogg stream begin its tracks; sound that is not among so many
// of them is not what it is for.
constexpr size_t kFarEnough = 8 * 1024;
constexpr size_t kOggHeader = 27;
constexpr size_t kStreamInfo = 34;

using Bytes = std::span<const uint8_t>;

bool startsWith(Bytes bytes, std::string_view start) {
  return bytes.size() >= start.size() &&
         std::equal(start.begin(), start.end(), bytes.begin(),
                    [](char a, uint8_t b) { return static_cast<uint8_t>(a) == b; });
}

uint32_t little32(Bytes bytes, size_t at) {
  return bytes[at] | uint32_t{bytes[at + 1]} << 8 | uint32_t{bytes[at + 2]} << 16 |
         uint32_t{bytes[at + 3]} << 24;
}

// Half of what the samples take: the usual measure of lossless music.
bool readStreamInfo(Bytes info, uint32_t ctype, kestrel_format* format) {
  if (info.size() < kStreamInfo) return false;
  const uint32_t rate = uint32_t{info[10]} << 12 | uint32_t{info[11]} << 4 | info[12] >> 4;
  const uint32_t channels = (info[12] >> 1 & 7u) + 1;
  const uint32_t bits = ((info[12] & 1u) << 4 | info[13] >> 4) + 1;
  if (rate == 0) return false;
  *format = {ctype, rate, channels, std::max(rate / 1000 * channels * bits * 500, 32'000u)};
  return true;
}

bool readVorbis(Bytes packet, kestrel_format* format) {
  if (!startsWith(packet, "\1vorbis") || packet.size() < 30) return false;
  const uint32_t rate = little32(packet, 12);
  const uint32_t nominal = little32(packet, 20);
  if (rate == 0 || rate > 768'000 || packet[11] == 0) return false;
  *format = {BASS_CTYPE_STREAM_OGG, rate, packet[11], nominal < 2'000'000 ? nominal : 0};
  return true;
}

bool readOpus(Bytes packet, kestrel_format* format) {
  if (!startsWith(packet, "OpusHead") || packet.size() < 19 || packet[9] == 0) return false;
  *format = {BASS_CTYPE_STREAM_OGG, 48'000, packet[9], 0};
  return true;
}

bool readOggFlac(Bytes packet, kestrel_format* format) {
  constexpr size_t kMapping = 9 + 4 + 4;  // its own header, "fLaC", a block's header
  return startsWith(packet,
                    "\x7f"
                    "FLAC") &&
         packet.size() >= kMapping &&
         readStreamInfo(packet.subspan(kMapping), BASS_CTYPE_STREAM_FLAC, format);
}

}  // namespace

int recogniseOgg(std::span<const uint8_t> head, kestrel_format* format) {
  const size_t seen = std::min<size_t>(head.size(), 4);
  if (!startsWith(head, std::string_view("OggS").substr(0, seen))) return KESTREL_NO;
  for (size_t page = 0; page < kFarEnough;) {
    if (head.size() < page + kOggHeader) return KESTREL_MORE;
    const Bytes bytes = head.subspan(page);
    if (!startsWith(bytes, "OggS")) return KESTREL_NO;
    const size_t segments = bytes[kOggHeader - 1];
    if (bytes.size() < kOggHeader + segments) return KESTREL_MORE;
    size_t length = 0;
    for (size_t i = 0; i < segments; ++i) length += bytes[kOggHeader + i];
    const Bytes rest = bytes.subspan(kOggHeader + segments);
    if (rest.size() < length) return KESTREL_MORE;
    const Bytes packet = rest.first(length);
    if (readVorbis(packet, format) || readOpus(packet, format) || readOggFlac(packet, format)) {
      return KESTREL_YES;
    }
    page += kOggHeader + segments + length;
  }
  return KESTREL_NO;
}

int recogniseFlac(std::span<const uint8_t> head, kestrel_format* format) {
  const size_t tag = id3Length(head);
  if (head.size() < tag + 4) {
    const Bytes start = head.subspan(std::min(tag, head.size()));
    return startsWith(start, std::string_view("fLaC").substr(0, start.size())) ? KESTREL_MORE
                                                                               : KESTREL_NO;
  }
  const Bytes bytes = head.subspan(tag);
  if (!startsWith(bytes, "fLaC")) return KESTREL_NO;
  if (bytes.size() < 8 + kStreamInfo) return KESTREL_MORE;
  return readStreamInfo(bytes.subspan(8), BASS_CTYPE_STREAM_FLAC, format) ? KESTREL_YES
                                                                          : KESTREL_NO;
}

}  // namespace engine
