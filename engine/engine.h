#pragma once

#include <map>
#include <memory>
#include <vector>

#include "engine/codec/codecs.h"
#include "engine/stream.h"

namespace engine {

/// What lies behind the C interface: the open streams by handle, the plug-ins, the
/// configuration. Members may be called from any thread; those that return int give
/// a code of bass.h.
class Engine {
 public:
  explicit Engine(std::unique_ptr<OutputFactory> outputs) : outputs_(std::move(outputs)) {}

  /// Takes another output for the streams to come. Before init.
  void useOutput(std::unique_ptr<OutputFactory> outputs) { outputs_ = std::move(outputs); }

  int init(int device);
  int free();
  /// The previous value, or nothing for an unknown option.
  bool setConfig(BASS_DWORD option, BASS_DWORD value, BASS_DWORD& previous);
  Codecs& codecs() { return codecs_; }

  int createStream(const char* url, Listener listener, HSTREAM& handle);
  int freeStream(HSTREAM handle);
  /// An unknown handle ends the opening of streams that have none yet.
  int stopStream(HSTREAM handle);
  int setVolume(HSTREAM handle, int volume);
  int setSync(HSTREAM handle, BASS_DWORD type, SYNCPROC* proc, uintptr_t user, HSYNC& sync);
  /// Null without such a stream.
  std::shared_ptr<Stream> find(HSTREAM handle);

 private:
  using Streams = std::vector<std::shared_ptr<Stream>>;
  void release(std::shared_ptr<Stream> stream);
  enum class Wait { no, yes };
  void releaseLeftOver(Wait wait);
  void limitFading();
  int startOpening(const std::shared_ptr<Stream>& stream);
  int endOpening(const std::shared_ptr<Stream>& stream, int code, HSTREAM& handle);

  std::unique_ptr<OutputFactory> outputs_;
  Codecs codecs_;

  base::Mutex mutex_;
  std::unique_ptr<NetworkStart> network_ GUARDED_BY(mutex_);  ///< there while initialised
  BASS_DWORD max_volume_ GUARDED_BY(mutex_) = 100;
  BASS_DWORD prebuffer_percent_ GUARDED_BY(mutex_) = 75;
  BASS_DWORD last_handle_ GUARDED_BY(mutex_) = 0;
  std::map<HSTREAM, std::shared_ptr<Stream>> streams_ GUARDED_BY(mutex_);
  Streams opening_ GUARDED_BY(mutex_);
  /// Freed, but not over: from one of their own callbacks, or while their sound fades.
  Streams left_over_ GUARDED_BY(mutex_);
};

/// The engine of the C interface; lives until the process ends.
Engine& instance();

}  // namespace engine
