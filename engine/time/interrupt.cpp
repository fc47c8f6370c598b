#include "engine/time/interrupt.h"

#include <system_error>

#if defined(_WIN32)
#include <windows.h>
#else
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#endif

namespace engine {

#if defined(_WIN32)

Interrupt::Interrupt() : native_(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
  if (native_ == nullptr) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
  }
}

Interrupt::~Interrupt() {
  CloseHandle(native_);
}

void Interrupt::set() noexcept {
  flag_.store(true, std::memory_order_release);
  SetEvent(native_);
}

bool Interrupt::wait(std::chrono::milliseconds time) const noexcept {
  return WaitForSingleObject(native_, static_cast<DWORD>(time.count())) == WAIT_OBJECT_0;
}

#else

Interrupt::Interrupt() : native_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (native_ < 0) throw std::system_error(errno, std::generic_category());
}

Interrupt::~Interrupt() {
  close(native_);
}

void Interrupt::set() noexcept {
  flag_.store(true, std::memory_order_release);
  const uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(native_, &one, sizeof one);
}

bool Interrupt::wait(std::chrono::milliseconds time) const noexcept {
  pollfd one{native_, POLLIN, 0};
  return poll(&one, 1, static_cast<int>(time.count())) > 0;
}

#endif

}  // namespace engine
