#include "engine/download_buffer.h"

#include <algorithm>
#include <cstring>

namespace engine {

bool DownloadBuffer::write(std::span<const uint8_t> bytes) {
  const Lock lock(mutex_);
  while (!bytes.empty()) {
    while (!closed_ && unread() >= capacity_) changed_.wait(mutex_);
    if (closed_) return false;
    const size_t step = std::min(bytes.size(), capacity_ - unread());
    append(bytes.first(step));
    bytes = bytes.subspan(step);
    changed_.notifyAll();
  }
  return !closed_;
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
  const Lock lock(mutex_);
  finished_ = true;
  changed_.notifyAll();
}

void DownloadBuffer::close() {
  const Lock lock(mutex_);
  closed_ = true;
  changed_.notifyAll();
}

int DownloadBuffer::read(uint8_t* to, size_t room) {
  const Lock lock(mutex_);
  while (!closed_ && !finished_ && unread() == 0) changed_.wait(mutex_);
  if (closed_) return -1;
  const size_t count = copyOut(to, std::min(room, unread()));
  drop(count);
  changed_.notifyAll();
  return static_cast<int>(count);
}

std::vector<uint8_t> DownloadBuffer::peek() {
  const Lock lock(mutex_);
  std::vector<uint8_t> head(unread());
  copyOut(head.data(), head.size());
  return head;
}

bool DownloadBuffer::waitFilled(size_t wanted, Deadline deadline) {
  const Lock lock(mutex_);
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
  const Lock lock(mutex_);
  return {written_, consumed_, finished_, closed_};
}

size_t DownloadBuffer::copyOut(uint8_t* to, size_t room) const {
  size_t done = 0;
  size_t at = consumed_ % kBlock;
  for (auto block = blocks_.begin(); done < room; ++block, at = 0) {
    const size_t step = std::min(room - done, kBlock - at);
    std::memcpy(to + done, block->get() + at, step);
    done += step;
  }
  return done;
}

void DownloadBuffer::drop(size_t count) {
  const uint64_t first = consumed_ / kBlock;
  consumed_ += count;
  for (uint64_t left = consumed_ / kBlock - first; left != 0; --left) {
    spare_ = std::move(blocks_.front());
    blocks_.pop_front();
  }
}

}  // namespace engine
