#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/mutex.h"

namespace engine {

/// The sound bytes between the network and the decoder, and the titles at their
/// places among them: one thread writes, one reads; behind the reader a third takes
/// what it has passed, for the listener; any may look or close. Grows as needed up
/// to its capacity.
class DownloadBuffer {
 public:
  using Deadline = std::chrono::steady_clock::time_point;

  explicit DownloadBuffer(size_t capacity) : capacity_(capacity) {}

  /// Waits for room. False once closed.
  bool write(std::span<const uint8_t> bytes);
  /// A title that counts from there on, in bytes since the start. The places of
  /// titles rise; one that has been passed already is taken at once. Where far more
  /// wait than any station sends, a new one takes the last one's place.
  void markTitle(std::string title, uint64_t position);
  /// No more will be written, unless it goes on after all.
  void finish();
  void resume();
  /// Ends all waits, now and later, and lets the bytes go.
  void close();

  /// Waits for bytes: how many were copied, 0 at the end, -1 when closed.
  int read(uint8_t* to, size_t room);
  /// Copies the next unread bytes, as many as there are up to `most`, and leaves them.
  std::vector<uint8_t> peek(size_t most);
  /// Waits until `wanted` unread bytes (or all there is room for) are there, no more
  /// come, or `deadline`. True in the first case.
  bool waitFilled(size_t wanted, Deadline deadline = Deadline::max());

  /// What the reader has passed: bytes up to the next title, or a title.
  struct Passed {
    std::vector<uint8_t> bytes;
    std::optional<std::string> title;
  };
  /// Waits for it. False once closed, or when all of a finished stream was taken.
  bool take(Passed& passed);

  struct Level {
    uint64_t written = 0;   ///< bytes since the start
    uint64_t consumed = 0;  ///< of these, read
    bool finished = false;
    bool closed = false;
    size_t unread() const { return static_cast<size_t>(written - consumed); }
  };
  Level level();
  size_t capacity() const { return capacity_; }

 private:
  static constexpr size_t kBlock = 16 * 1024;
  static constexpr size_t kMostTitles = 4096;
  using Block = std::unique_ptr<uint8_t[]>;
  struct Mark {
    uint64_t position;
    std::string title;
  };

  size_t unread() const REQUIRES(mutex_) { return static_cast<size_t>(written_ - consumed_); }
  size_t room() const REQUIRES(mutex_);
  bool titlePassed() const REQUIRES(mutex_);
  void append(std::span<const uint8_t> bytes) REQUIRES(mutex_);
  void copyOut(uint64_t from, uint8_t* to, size_t count) const REQUIRES(mutex_);
  void dropTaken() REQUIRES(mutex_);

  const size_t capacity_;
  base::Mutex mutex_;
  base::Condition changed_;
  std::deque<Block> blocks_ GUARDED_BY(mutex_);
  Block spare_
      GUARDED_BY(mutex_);  ///< the last emptied one, so that a steady stream allocates nothing
  std::deque<Mark> marks_ GUARDED_BY(mutex_);
  uint64_t written_ GUARDED_BY(mutex_) = 0;
  uint64_t consumed_ GUARDED_BY(mutex_) = 0;
  uint64_t taken_ GUARDED_BY(mutex_) = 0;
  uint64_t first_block_ GUARDED_BY(mutex_) = 0;  ///< number of blocks_.front()
  bool finished_ GUARDED_BY(mutex_) = false;
  bool closed_ GUARDED_BY(mutex_) = false;
};

}  // namespace engine
