#include "engine/delivery.h"

#include <exception>

namespace engine {

Delivery::Delivery(Listener listener, const Interrupt& interrupt, DownloadBuffer& buffer,
                   TitleSink title)
    : listener_(listener),
      interrupt_(interrupt),
      buffer_(buffer),
      title_(std::move(title)),
      thread_([this] { run(); }) {}

Delivery::~Delivery() {
  join();
}

void Delivery::join() {
  const base::Lock lock(join_mutex_);
  if (thread_.joinable()) thread_.join();
}

void Delivery::tellStatus(const std::string& text) {
  if (listener_.wants_status) tell(text.c_str(), 0);
}

void Delivery::tell(const void* bytes, size_t length) {
  if (listener_.proc == nullptr) return;
  const base::Lock lock(callback_mutex_);
  if (interrupt_.isSet()) return;
  listener_.proc(bytes, static_cast<BASS_DWORD>(length), listener_.user);
}

void Delivery::run() {
  id_ = std::this_thread::get_id();
  DownloadBuffer::Passed passed;
  for (bool more = true; more;) {
    try {
      more = buffer_.take(passed);
      if (more) deliver(passed);
    } catch (const std::exception&) {
      // Out of memory: what the listener does not get still plays.
      interrupt_.wait(kMemoryRetry);
    }
  }
  tell(nullptr, 0);
}

void Delivery::deliver(const DownloadBuffer::Passed& passed) {
  if (!passed.title) return tell(passed.bytes.data(), passed.bytes.size());
  if (!interrupt_.isSet()) title_(*passed.title);
}

}  // namespace engine
