#include "engine/net/chunked_source.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

namespace engine {
namespace {

constexpr size_t kLongestLine = 4096;
constexpr size_t kReadSize = 16 * 1024;

}  // namespace

void ChunkDecoder::feed(const uint8_t* bytes, size_t length, std::vector<uint8_t>& contents) {
  const uint8_t* const end = bytes + length;
  while (bytes != end && state_ != State::over) {
    if (state_ == State::contents) {
      const auto step = std::min<uint64_t>(left_, static_cast<uint64_t>(end - bytes));
      contents.insert(contents.end(), bytes, bytes + step);
      bytes += step;
      left_ -= step;
      if (left_ == 0) state_ = State::contents_end;
      continue;
    }
    const auto byte = static_cast<char>(*bytes++);
    if (state_ == State::contents_end) {
      if (byte == '\n') state_ = State::size;
    } else if (byte == '\n') {
      takeSize();
    } else if (line_.size() < kLongestLine) {
      line_ += byte;
    } else {
      state_ = State::over;
    }
  }
}

void ChunkDecoder::takeSize() {
  const auto [end, wrong] = std::from_chars(line_.data(), line_.data() + line_.size(), left_, 16);
  state_ = wrong != std::errc() || left_ == 0 ? State::over : State::contents;
  line_.clear();
}

NetError ChunkedSource::read(uint8_t* to, size_t room, size_t& got) {
  got = 0;
  while (taken_ == contents_.size() && !decoder_.isOver()) {
    contents_.clear();
    taken_ = 0;
    std::array<uint8_t, kReadSize> raw;
    size_t more = 0;
    const NetError error = source_->read(raw.data(), raw.size(), more);
    if (error != NetError::none || more == 0) return error;
    decoder_.feed(raw.data(), more, contents_);
  }
  got = std::min(room, contents_.size() - taken_);
  if (got != 0) std::memcpy(to, contents_.data() + taken_, got);
  taken_ += got;
  return NetError::none;
}

}  // namespace engine
