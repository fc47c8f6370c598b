#pragma once

#include <chrono>
#include <thread>

/// Asks again and again whether it holds; false if not within 20 s.
template <class Condition>
bool eventually(const Condition& holds) {
  using Clock = std::chrono::steady_clock;
  for (const auto end = Clock::now() + std::chrono::seconds(20); !holds();) {
    if (Clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}
