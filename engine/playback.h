#pragma once

#include <atomic>
#include <thread>

#include "engine/codec/codecs.h"
#include "engine/download_buffer.h"
#include "engine/net/socket.h"
#include "engine/sound/cushion.h"
#include "engine/sound/gain.h"
#include "engine/sound/output.h"

namespace engine {

/// The second half of a stream: decodes what has been downloaded and plays it, on a
/// thread of its own. The device is opened at once, so that it is ready when the
/// first sound is.
class Playback {
 public:
  /// `interrupt` and `buffer` belong to the stream and outlive this; setting the one
  /// and closing the other ends the thread.
  Playback(OutputFactory& outputs, const Interrupt& interrupt, DownloadBuffer& buffer);
  /// Joins.
  ~Playback();
  Playback(const Playback&) = delete;
  Playback& operator=(const Playback&) = delete;

  /// Starts the sound of a stream that begins with that codec, once; it may change to
  /// another of `all`. `bitrate` in bit/s.
  void play(Codec codec, std::vector<Codec> all, uint32_t bitrate);
  /// 0 to 1; taken over with the next piece of sound.
  void setVolume(float volume) { volume_.store(volume, std::memory_order_relaxed); }
  /// Ends the wait for play().
  void cancel();
  /// Waits for the thread's end, which interrupt, cancel and a closed buffer bring,
  /// soon but for the fading of the sound.
  void join();
  /// True when join() would not wait.
  bool isOver() const { return over_.load(std::memory_order_acquire); }
  /// Type, rate and channels of the latest sound; a rate of 0 before the first.
  kestrel_format format();
  /// Sound that is decoded and queued at the device.
  unsigned pendingMilliseconds() const { return pending_.load(std::memory_order_relaxed); }

 private:
  void run();
  bool waitForPlay();
  void playSound();
  void decodeAll();
  void noteFormat(const kestrel_sound& sound);
  int feed(uint8_t* to, int room);
  void refillAfterGap();
  void waitForBytes();
  void emit(std::span<float> samples);
  void writeHeld();
  void fadeHeld();
  void openOutput();
  void endSound();

  OutputFactory& outputs_;
  const Interrupt& interrupt_;
  DownloadBuffer& buffer_;
  std::atomic<float> volume_{1.0f};
  std::atomic<unsigned> pending_{0};
  std::atomic<bool> over_{false};

  base::Mutex mutex_;
  base::Condition changed_;
  Codec codec_ GUARDED_BY(mutex_);
  std::vector<Codec> codecs_ GUARDED_BY(mutex_);
  bool cancelled_ GUARDED_BY(mutex_) = false;
  kestrel_format format_ GUARDED_BY(mutex_) = {};

  // The thread's own.
  uint32_t bytes_per_second_ = 0;
  Cushion cushion_;
  Gain gain_;
  std::unique_ptr<Output> output_;  ///< there once sound is
  bool has_device_ = false;
  Clock::time_point last_look_{};  ///< for a device
  /// The latest piece of sound, kept back so that it can be faded if it is the last.
  std::vector<float> held_;

  base::Mutex join_mutex_;
  std::thread thread_;  // last: it uses the rest
};

}  // namespace engine
