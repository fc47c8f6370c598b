#pragma once

#include <chrono>
#include <memory>

#include "engine/time/interrupt.h"

namespace engine {

/// Notices that this machine's network became another one: a cable, a wireless
/// network, a wake from sleep. One thread.
class NetworkWatch {
 public:
  enum class Woken { by_time, by_interrupt, by_change };

  /// Watches from now on; a system that tells nothing is one where nothing changes.
  NetworkWatch();
  ~NetworkWatch();
  NetworkWatch(const NetworkWatch&) = delete;
  NetworkWatch& operator=(const NetworkWatch&) = delete;

  /// Changes since the last call count.
  Woken wait(const Interrupt& interrupt, std::chrono::milliseconds time);

 private:
  struct System;
  std::unique_ptr<System> system_;
};

}  // namespace engine
