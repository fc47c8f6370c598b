#pragma once

#include <memory>
#include <span>

#include "engine/time/interrupt.h"

namespace engine {

/// An open road to the loudspeaker, stereo. Plays from the first write on. One
/// thread.
class Output {
 public:
  static constexpr unsigned kChannels = 2;

  /// Drops what has not sounded yet, at once.
  virtual ~Output() = default;
  virtual unsigned rate() const = 0;  ///< Hz
  /// Queues interleaved sound, -1 to 1 (louder is clipped), and takes it off
  /// `samples`; waits while the queue is full, but not once interrupted: then some is
  /// left. False: the device is gone.
  [[nodiscard]] virtual bool write(std::span<const float>& samples) = 0;
  /// Lets the device have what a device block is not yet filled with.
  virtual void flush() = 0;
  /// Sound that is queued and not yet played.
  virtual unsigned pendingMilliseconds() = 0;
  /// The last sound of all: waits until it has been played, interrupted or not, but
  /// no longer than kLongestEnd.
  virtual void finish(std::span<const float> last) = 0;

  static constexpr std::chrono::milliseconds kLongestEnd{250};
};

/// Where outputs come from. Any thread.
class OutputFactory {
 public:
  virtual ~OutputFactory() = default;
  /// Null: there is no such device now.
  virtual std::unique_ptr<Output> open(const Interrupt& interrupt) = 0;
};

/// The system's default device.
std::unique_ptr<OutputFactory> makeSystemOutput();

}  // namespace engine
