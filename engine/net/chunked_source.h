#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/net/byte_source.h"

namespace engine {

/// Takes a body apart that comes in chunks (RFC 9112, 7.1). One thread.
class ChunkDecoder {
 public:
  /// Appends the contents of the next bytes of the body. What follows the last chunk,
  /// or the first fault in the form, is left out.
  void feed(const uint8_t* bytes, size_t length, std::vector<uint8_t>& contents);
  bool isOver() const { return state_ == State::over; }

 private:
  enum class State { size, contents, contents_end, over };
  void takeSize();

  State state_ = State::size;
  std::string line_;
  uint64_t left_ = 0;  ///< of the present chunk
};

/// The contents of such a body, from servers that send one even to clients who know
/// nothing of it. One thread.
class ChunkedSource final : public ByteSource {
 public:
  explicit ChunkedSource(std::unique_ptr<ByteSource> source) : source_(std::move(source)) {}

  const ResponseHead& head() const override { return source_->head(); }
  [[nodiscard]] NetError read(uint8_t* to, size_t room, size_t& got) override;

 private:
  std::unique_ptr<ByteSource> source_;
  ChunkDecoder decoder_;
  std::vector<uint8_t> contents_;
  size_t taken_ = 0;
};

}  // namespace engine
