#pragma once

#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <utility>

namespace player {

/// The player's volume on the sliders' scale. Everything that shows it or sounds
/// by it listens here. Set on the user-interface thread, read from any.
class Volume {
 public:
  static constexpr int kMax = 10000;
  static constexpr int kStep = 500;  ///< of a key or a notch of the wheel

  [[nodiscard]] int get() const { return value_; }

  /// Values outside the scale become its nearer end.
  void set(int value) {
    value = std::clamp(value, 0, kMax);
    if (value_.exchange(value) == value) return;
    for (const auto& [id, listener] : listeners_) listener(value);
  }

  /// Called after each change. The listener must outlive this or be removed.
  int listen(std::function<void(int)> listener) {
    listeners_.emplace(next_listener_, std::move(listener));
    return next_listener_++;
  }
  void forget(int listener) { listeners_.erase(listener); }

 private:
  std::atomic<int> value_ = kMax;
  std::map<int, std::function<void(int)>> listeners_;
  int next_listener_ = 1;
};

}  // namespace player
