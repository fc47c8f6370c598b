#pragma once

#include <span>

namespace engine {

/// Brings sound to a volume, in short straight ramps: a jump would click, and a row
/// of jumps buzz. Starts at silence. One thread.
class Gain {
 public:
  /// A whole ramp, from silence to full.
  static constexpr unsigned kRampMilliseconds = 15;

  /// `samples` are interleaved stereo at `rate` Hz, changed in place; sound at full
  /// volume stays as it is to the bit. `target` 0 to 1.
  void apply(std::span<float> samples, float target, unsigned rate);
  /// The next sound comes after silence.
  void restart() { reached_ = 0; }

 private:
  float reached_ = 0;
};

}  // namespace engine
