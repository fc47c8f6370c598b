#include "engine/codec/ogg_pages.h"

extern "C" {
#include <libavutil/crc.h>
}

#include <algorithm>
#include <cstring>

namespace engine {
namespace {

constexpr size_t kHeader = 27;
constexpr size_t kFlags = 5;
constexpr size_t kChecksum = 22;
constexpr uint8_t kBeginsStream = 2;
constexpr int kReadSize = 2048;

// Computed over the page with its own field as zeros.
bool checksumFits(std::span<const uint8_t> page) {
  const AVCRC* table = av_crc_get_table(AV_CRC_32_IEEE);
  constexpr uint8_t kZeros[4] = {};
  uint32_t sum = av_crc(table, 0, page.data(), kChecksum);
  sum = av_crc(table, sum, kZeros, sizeof kZeros);
  sum = av_crc(table, sum, page.data() + kChecksum + 4, page.size() - kChecksum - 4);
  // The library keeps this sum with its bytes swapped on little-endian machines.
  const uint8_t bytes[4] = {static_cast<uint8_t>(sum >> 24), static_cast<uint8_t>(sum >> 16),
                            static_cast<uint8_t>(sum >> 8), static_cast<uint8_t>(sum)};
  return std::memcmp(page.data() + kChecksum, bytes, 4) == 0;
}

}  // namespace

size_t oggPageLength(std::span<const uint8_t> bytes) {
  constexpr uint8_t kStart[5] = {'O', 'g', 'g', 'S', 0};
  const size_t seen = std::min(bytes.size(), sizeof kStart);
  if (std::memcmp(bytes.data(), kStart, seen) != 0) return 0;
  if (bytes.size() < kHeader) return kHeader;
  size_t length = kHeader + bytes[kHeader - 1];
  if (bytes.size() < length) return length;
  for (size_t i = 0; i < bytes[kHeader - 1]; ++i) length += bytes[kHeader + i];
  if (bytes.size() < length) return length;
  return checksumFits(bytes.first(length)) ? length : 0;
}

bool OggPages::fill(size_t wanted) {
  while (bytes_.size() < wanted) {
    const size_t had = bytes_.size();
    bytes_.resize(had + kReadSize);
    const int got = read_(bytes_.data() + had, kReadSize);
    bytes_.resize(had + static_cast<size_t>(std::max(got, 0)));
    if (got <= 0) return false;
  }
  return true;
}

bool OggPages::nextPage() {
  bytes_.erase(bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(page_));
  page_ = 0;
  taken_ = 0;
  size_t wanted = 1;
  for (;;) {
    if (!fill(wanted)) return false;
    const size_t length = oggPageLength(bytes_);
    if (length == 0) {
      const auto next = std::find(bytes_.begin() + 1, bytes_.end(), uint8_t{'O'});
      bytes_.erase(bytes_.begin(), next);
      wanted = 1;
    } else if (length > bytes_.size()) {
      wanted = length;
    } else {
      page_ = length;
      return true;
    }
  }
}

int OggPages::read(uint8_t* to, int room) {
  if (over_) return 0;
  if (taken_ == page_) {
    if (!nextPage()) return -1;
    const bool begins = (bytes_[kFlags] & kBeginsStream) != 0;
    over_ = begins && in_sound_;
    if (over_) return 0;
    in_sound_ = in_sound_ || !begins;
  }
  const size_t count = std::min(page_ - taken_, static_cast<size_t>(room));
  std::memcpy(to, bytes_.data() + taken_, count);
  taken_ += count;
  return static_cast<int>(count);
}

void OggPages::nextLink() {
  uint8_t rest[4096];
  while (read(rest, sizeof rest) > 0) continue;
  over_ = false;
  in_sound_ = false;
}

}  // namespace engine
