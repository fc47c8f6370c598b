#pragma once

#include <atomic>
#include <chrono>

namespace engine {

/// After so long others may have given memory back that was wanted in vain.
inline constexpr std::chrono::milliseconds kMemoryRetry{100};

/// A flag that is set once and wakes whoever waits for it, alone or together with
/// a socket. All members from any thread.
class Interrupt {
 public:
#if defined(_WIN32)
  using Native = void*;  ///< a manual-reset event
#else
  using Native = int;  ///< a descriptor that becomes readable
#endif

  Interrupt();
  ~Interrupt();
  Interrupt(const Interrupt&) = delete;
  Interrupt& operator=(const Interrupt&) = delete;

  void set() noexcept;
  bool isSet() const noexcept {
    return flag_.load(std::memory_order_acquire);
  }
  /// True when set before the time is over.
  bool wait(std::chrono::milliseconds time) const noexcept;
  Native native() const noexcept {
    return native_;
  }

 private:
  std::atomic<bool> flag_{false};
  Native native_;
};

}  // namespace engine
