#include "engine/download_buffer.h"

#include <algorithm>
#include <cstring>

namespace engine {

bool DownloadBuffer::write(std::span<const uint8_t> bytes) {
  const base::Lock lock(mutex_);
  while (!bytes.empty()) {
    while (!closed_ && room() == 0) changed_.wait(mutex_);
    if (closed_) return false;
    const size_t step = std::min(bytes.size(), room());
    append(bytes.first(step));
    bytes = bytes.subspan(step);
    changed_.notifyAll();
  }
  return !closed_;
}

// The listener may lag behind as much again as the decoder: a slow disk is to stop
// the download only when it does not catch up at all.
size_t DownloadBuffer::room() const {
  const uint64_t kept = written_ - taken_;
  if (kept >= 2 * capacity_) return 0;
  return std::min(capacity_ - std::min(unread(), capacity_),
                  static_cast<size_t>(2 * capacity_ - kept));
}

void DownloadBuffer::markTitle(std::string title, uint64_t position) {
  const base::Lock lock(mutex_);
  if (marks_.size() == kMostTitles) {
    marks_.back().title = std::move(title);
    return;
  }
  if (!marks_.empty()) position = std::max(position, marks_.back().position);
  marks_.push_back({position, std::move(title)});
  changed_.notifyAll();
}

void DownloadBuffer::append(std::span<const uint8_t> bytes) {
  while (!bytes.empty()) {
    const size_t at = written_ % kBlock;
    if (at == 0) {
      blocks_.push_back(spare_ ? std::move(spare_) : std::make_unique<uint8_t[]>(kBlock));
    }
    const size_t step = std::min(bytes.size(), kBlock - at);
    std::memcpy(blocks_.back().get() + at, bytes.data(), step);
    written_ += step;
    bytes = bytes.subspan(step);
  }
}

void DownloadBuffer::finish() {
  const base::Lock lock(mutex_);
  finished_ = true;
  changed_.notifyAll();
}

void DownloadBuffer::resume() {
  const base::Lock lock(mutex_);
  finished_ = false;
}

void DownloadBuffer::close() {
  const base::Lock lock(mutex_);
  closed_ = true;
  blocks_.clear();
  spare_.reset();
  changed_.notifyAll();
}

int DownloadBuffer::read(uint8_t* to, size_t room) {
  const base::Lock lock(mutex_);
  while (!closed_ && !finished_ && unread() == 0) changed_.wait(mutex_);
  if (closed_) return -1;
  const size_t count = std::min(room, unread());
  copyOut(consumed_, to, count);
  consumed_ += count;
  changed_.notifyAll();
  return static_cast<int>(count);
}

std::vector<uint8_t> DownloadBuffer::peek(size_t most) {
  const base::Lock lock(mutex_);
  if (closed_) return {};
  std::vector<uint8_t> head(std::min(unread(), most));
  copyOut(consumed_, head.data(), head.size());
  return head;
}

bool DownloadBuffer::waitFilled(size_t wanted, Deadline deadline) {
  const base::Lock lock(mutex_);
  wanted = std::min(wanted, capacity_);
  while (!closed_ && !finished_ && unread() < wanted) {
    if (deadline == Deadline::max()) {
      changed_.wait(mutex_);
    } else if (!changed_.waitUntil(mutex_, deadline)) {
      break;
    }
  }
  return !closed_ && unread() >= wanted;
}

DownloadBuffer::Level DownloadBuffer::level() {
  const base::Lock lock(mutex_);
  return {written_, consumed_, finished_, closed_};
}

bool DownloadBuffer::titlePassed() const {
  return !marks_.empty() && (marks_.front().position <= taken_);
}

bool DownloadBuffer::take(Passed& passed) {
  passed.bytes.clear();
  passed.title.reset();
  const base::Lock lock(mutex_);
  const auto done = [this]() REQUIRES(mutex_) {
    return finished_ && taken_ == written_ && marks_.empty();
  };
  while (!closed_ && !done() && !titlePassed() && taken_ == consumed_) changed_.wait(mutex_);
  if (closed_) return false;
  if (titlePassed()) {
    passed.title = std::move(marks_.front().title);
    marks_.pop_front();
    return true;
  }
  if (done()) return false;
  uint64_t end = std::min(consumed_, taken_ + kBlock);
  if (!marks_.empty()) end = std::min(end, marks_.front().position);
  passed.bytes.resize(static_cast<size_t>(end - taken_));
  copyOut(taken_, passed.bytes.data(), passed.bytes.size());
  taken_ = end;
  dropTaken();
  changed_.notifyAll();
  return true;
}

void DownloadBuffer::copyOut(uint64_t from, uint8_t* to, size_t count) const {
  size_t block = static_cast<size_t>(from / kBlock - first_block_);
  size_t at = from % kBlock;
  for (size_t done = 0; done < count; ++block, at = 0) {
    const size_t step = std::min(count - done, kBlock - at);
    std::memcpy(to + done, blocks_[block].get() + at, step);
    done += step;
  }
}

void DownloadBuffer::dropTaken() {
  for (; first_block_ < taken_ / kBlock; ++first_block_) {
    spare_ = std::move(blocks_.front());
    blocks_.pop_front();
  }
}

}  // namespace engine
