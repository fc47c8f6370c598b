#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "engine/connection.h"
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

  /// Starts the thread.
  void start();
  /// Waits for the server's answer. The head stays as it is from then on.
  NetError waitForAnswer();
  const ResponseHead& head() const { return head_; }

  /// The stream can be played: from now on a lost connection is made again. Before
  /// that it ends the stream. `cushion` gives how many milliseconds the sound lasts
  /// without further bytes; it tells the thread how seldom it may look for more.
  void accept(std::function<unsigned()> cushion);
  /// Ends the wait for accept().
  void cancel();

  /// True in a callback of this stream.
  bool isOwnThread() const { return std::this_thread::get_id() == id_.load(); }
  /// Waits for the thread's end, which interrupt, cancel and a closed buffer bring.
  void join();

 private:
  void run();
  void download(Connection& connection);
  bool isAccepted();
  void nap();

  const Url url_;
  const Interrupt& interrupt_;
  DownloadBuffer& buffer_;
  const StatusSink status_;

  base::Mutex mutex_;
  base::Condition changed_;
  bool answered_ GUARDED_BY(mutex_) = false;
  NetError error_ GUARDED_BY(mutex_) = NetError::none;
  bool cancelled_ GUARDED_BY(mutex_) = false;
  std::function<unsigned()> cushion_ GUARDED_BY(mutex_);  ///< empty until accepted
  bool waiting_ GUARDED_BY(mutex_) = false;               ///< for that, the connection lost
  ResponseHead head_;                                     ///< written before answered_ is set

  std::atomic<std::thread::id> id_;
  base::Mutex join_mutex_;
  std::thread thread_;  // last: it uses the rest
};

}  // namespace engine
