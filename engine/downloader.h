#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "engine/byte_source.h"
#include "engine/download_buffer.h"

namespace engine {

/// The first half of a stream: asks the server, takes out the titles, puts both
/// them and the sound's bytes into the buffer, on a thread of its own.
class Downloader {
 public:
  /// `interrupt` and `buffer` belong to the stream and outlive this. `status` is
  /// called on the thread.
  Downloader(Url url, const Interrupt& interrupt, DownloadBuffer& buffer, StatusSink status);
  /// Joins.
  ~Downloader();
  Downloader(const Downloader&) = delete;
  Downloader& operator=(const Downloader&) = delete;

  /// Waits for the server's answer. The head stays as it is from then on.
  NetError waitForAnswer();
  const ResponseHead& head() const { return head_; }

  /// How long the sound lasts without further bytes; tells the thread how seldom it
  /// may look for more.
  void setCushion(std::function<unsigned()> milliseconds);

  /// True in a callback of this stream.
  bool isOwnThread() const { return std::this_thread::get_id() == id_.load(); }
  /// Waits for the thread's end, which interrupt and a closed buffer bring.
  void join();

 private:
  void run();
  void download(ByteSource& source);
  void nap();

  const Url url_;
  const Interrupt& interrupt_;
  DownloadBuffer& buffer_;
  const StatusSink status_;

  Mutex mutex_;
  Condition changed_;
  bool answered_ GUARDED_BY(mutex_) = false;
  NetError error_ GUARDED_BY(mutex_) = NetError::none;
  std::function<unsigned()> cushion_ GUARDED_BY(mutex_);
  ResponseHead head_;  ///< written before answered_ is set

  std::atomic<std::thread::id> id_;
  Mutex join_mutex_;
  std::thread thread_;  // last: it uses the rest
};

}  // namespace engine
