#pragma once

#include <algorithm>
#include <chrono>

namespace engine {

/// How much sound is gathered after a gap, so that the next one does not come at once:
/// twice as much with each, and half of it for each while without one. One thread.
class Cushion {
 public:
  using Time = std::chrono::steady_clock::time_point;
  using Length = std::chrono::milliseconds;
  static constexpr Length kSmallest{500};
  static constexpr Length kLargest{4000};
  static constexpr std::chrono::minutes kCalm{3};

  /// What to gather after the gap that is now.
  Length afterGap(Time now) {
    for (auto calm = now - last_gap_; calm >= kCalm && next_ > kSmallest; calm -= kCalm) next_ /= 2;
    last_gap_ = now;
    const Length length = next_;
    next_ = std::min(next_ * 2, kLargest);
    return length;
  }

 private:
  Length next_ = kSmallest;
  Time last_gap_{};
};

}  // namespace engine
