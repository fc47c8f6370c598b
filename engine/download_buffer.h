#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <span>
#include <vector>

#include "engine/mutex.h"

namespace engine {

/// The sound bytes between the network and the decoder: one thread writes, one
/// reads, any may look or close. Grows as needed up to its capacity.
class DownloadBuffer {
 public:
  using Deadline = std::chrono::steady_clock::time_point;

  explicit DownloadBuffer(size_t capacity) : capacity_(capacity) {}

  /// Waits for room. False once closed.
  bool write(std::span<const uint8_t> bytes);
  /// No more will be written.
  void finish();
  /// Ends all waits, now and later.
  void close();

  /// Waits for bytes: how many were copied, 0 at the end, -1 when closed.
  int read(uint8_t* to, size_t room);
  /// Copies all unread bytes and leaves them.
  std::vector<uint8_t> peek();
  /// Waits until `wanted` unread bytes (or all there is room for) are there, no more
  /// come, or `deadline`. True in the first case.
  bool waitFilled(size_t wanted, Deadline deadline = Deadline::max());

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
  using Block = std::unique_ptr<uint8_t[]>;

  size_t unread() const REQUIRES(mutex_) { return static_cast<size_t>(written_ - consumed_); }
  void append(std::span<const uint8_t> bytes) REQUIRES(mutex_);
  size_t copyOut(uint8_t* to, size_t room) const REQUIRES(mutex_);
  void drop(size_t count) REQUIRES(mutex_);

  const size_t capacity_;
  Mutex mutex_;
  Condition changed_;
  std::deque<Block> blocks_ GUARDED_BY(mutex_);
  Block spare_
      GUARDED_BY(mutex_);  ///< the last emptied one, so that a steady stream allocates nothing
  uint64_t written_ GUARDED_BY(mutex_) = 0;
  uint64_t consumed_ GUARDED_BY(mutex_) = 0;
  bool finished_ GUARDED_BY(mutex_) = false;
  bool closed_ GUARDED_BY(mutex_) = false;
};

}  // namespace engine
