#pragma once

#include <atomic>
#include <thread>

#include "engine/codecs.h"
#include "engine/download_buffer.h"
#include "engine/output.h"

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
  /// 0 to 1; taken over within the next piece of sound.
  void setGain(float gain) { gain_.store(gain, std::memory_order_relaxed); }
  /// Ends the wait for play().
  void cancel();
  /// Waits for the thread's end, which interrupt, cancel and a closed buffer bring.
  void join();
  /// Sound that is decoded and queued at the device.
  unsigned pendingMilliseconds() const { return pending_.load(std::memory_order_relaxed); }

 private:
  void run();
  bool waitForPlay();
  void playSound();
  int feed(uint8_t* to, int room);
  void refillAfterGap();
  bool emit(std::span<float> samples);
  void applyGain(std::span<float> samples);
  bool openOutput();
  void drain();

  OutputFactory& outputs_;
  const Interrupt& interrupt_;
  DownloadBuffer& buffer_;
  std::atomic<float> gain_{1.0f};
  std::atomic<unsigned> pending_{0};

  Mutex mutex_;
  Condition changed_;
  Codec codec_ GUARDED_BY(mutex_);
  std::vector<Codec> codecs_ GUARDED_BY(mutex_);
  bool cancelled_ GUARDED_BY(mutex_) = false;

  // The thread's own.
  uint32_t bytes_per_second_ = 0;
  unsigned cushion_milliseconds_ = 0;
  float reached_gain_ = 0;
  bool sounding_ = false;
  std::unique_ptr<Output> output_;

  Mutex join_mutex_;
  std::thread thread_;  // last: it uses the rest
};

}  // namespace engine
