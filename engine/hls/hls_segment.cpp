#include "engine/hls/hls_segment.h"

extern "C" {
#include <libavutil/aes.h>
#include <libavutil/mem.h>
}

#include <algorithm>

#include "engine/net/fetch.h"

namespace engine {
namespace {

constexpr size_t kReadSize = 8 * 1024;
// What broke off is asked for again after the first pause, twice as long, and so on
// to the last one: as long as the sound in hand usually bridges.
constexpr std::chrono::milliseconds kFirstPause{500};
constexpr std::chrono::milliseconds kLastPause{2000};

}  // namespace

void HlsSegmentReader::FreeCipher::operator()(AVAES* cipher) const {
  av_free(cipher);
}

NetError HlsSegmentReader::open(const Url& base, const HlsFile& file, const HlsKey* key,
                                uint64_t number) {
  close();
  cipher_.reset();
  encrypted_.clear();
  auto url = resolveRedirect(base, file.address);
  if (!url || (key != nullptr && key->method == HlsKey::Method::unknown)) return NetError::format;
  if (key != nullptr) {
    if (const NetError error = loadKey(base, *key); error != NetError::none) return error;
    vector_ = key->iv.value_or(std::array<uint8_t, kBlock>{});
    for (size_t i = 0; i < 8 && !key->iv; ++i) {
      vector_[kBlock - 1 - i] = static_cast<uint8_t>(number >> (8 * i));
    }
  }
  url_ = std::move(*url);
  piece_ = file.range;
  taken_ = 0;
  const NetError error = ask();
  is_open_ = error == NetError::none;
  return error;
}

void HlsSegmentReader::close() {
  is_open_ = false;
  source_.reset();
}

NetError HlsSegmentReader::ask() {
  const bool to_end = piece_.length == 0;
  const ByteRange rest{piece_.from + taken_, to_end ? 0 : piece_.length - taken_};
  OpenedSource opened = openSource(
      url_, interrupt_, [](const std::string&) {}, rest);
  if (!opened.source) return opened.error;
  source_ = std::move(opened.source);
  const ResponseHead& head = source_->head();
  skip_ = head.status == 206 ? 0 : rest.from;
  left_ = to_end ? std::nullopt : std::optional(rest.length);
  const auto length = head.number("content-length");
  if (to_end && length && *length >= skip_) left_ = *length - skip_;
  return NetError::none;
}

NetError HlsSegmentReader::loadKey(const Url& base, const HlsKey& key) {
  if (key.address != key_address_ || key_.size() != kBlock) {
    auto url = resolveRedirect(base, key.address);
    if (!url) return NetError::format;
    key_address_.clear();
    const NetError error = fetchDocument(*url, interrupt_, kBlock, key_);
    if (error != NetError::none) return error;
    if (key_.size() != kBlock) return NetError::format;
    key_address_ = key.address;
  }
  cipher_.reset(av_aes_alloc());
  if (!cipher_) return NetError::failed;
  av_aes_init(cipher_.get(), reinterpret_cast<const uint8_t*>(key_.data()), 128, 1);
  return NetError::none;
}

NetError HlsSegmentReader::read(uint8_t* to, size_t room, size_t& got) {
  return cipher_ ? readEncrypted(to, room, got) : readSource(to, room, got);
}

NetError HlsSegmentReader::readSource(uint8_t* to, size_t room, size_t& got) {
  for (auto pause = kFirstPause;; pause *= 2) {
    got = 0;
    NetError error = source_ ? NetError::none : ask();
    if (error == NetError::none) error = readOnce(to, room, got);
    const bool well = error == NetError::none && (got != 0 || left_.value_or(0) == 0);
    const bool final = error == NetError::interrupted || error == NetError::gone;
    if (well || final || pause > kLastPause) return error;
    source_.reset();
    if (interrupt_.wait(pause)) return NetError::interrupted;
  }
}

NetError HlsSegmentReader::readOnce(uint8_t* to, size_t room, size_t& got) {
  while (skip_ != 0) {
    const auto some = static_cast<size_t>(std::min<uint64_t>(skip_, room));
    const NetError error = source_->read(to, some, got);
    if (error != NetError::none || got == 0) return error;
    skip_ -= got;
  }
  got = 0;
  room = static_cast<size_t>(std::min<uint64_t>(left_.value_or(room), room));
  if (room == 0) return NetError::none;
  const NetError error = source_->read(to, room, got);
  taken_ += got;
  if (left_) *left_ -= got;
  return error;
}

// The last block tells how much of it is filling; so one is always kept back until
// the end is known.
NetError HlsSegmentReader::readEncrypted(uint8_t* to, size_t room, size_t& got) {
  got = 0;
  bool ended = false;
  while (encrypted_.size() < 2 * kBlock && !ended) {
    const size_t had = encrypted_.size();
    encrypted_.resize(had + kReadSize);
    size_t more = 0;
    const NetError error = readSource(encrypted_.data() + had, kReadSize, more);
    encrypted_.resize(had + more);
    if (error != NetError::none) return error;
    ended = more == 0;
  }
  const size_t whole = encrypted_.size() / kBlock;
  const size_t blocks = std::min(ended ? whole : whole - 1, room / kBlock);
  if (blocks == 0) return NetError::none;
  av_aes_crypt(cipher_.get(), to, encrypted_.data(), static_cast<int>(blocks), vector_.data(), 1);
  encrypted_.erase(encrypted_.begin(),
                   encrypted_.begin() + static_cast<std::ptrdiff_t>(blocks * kBlock));
  got = blocks * kBlock;
  const size_t filling = to[got - 1];
  if (ended && blocks == whole && filling >= 1 && filling <= kBlock) got -= filling;
  return NetError::none;
}

}  // namespace engine
