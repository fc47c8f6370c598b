#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "engine/abi/bass.h"
#include "engine/download_buffer.h"
#include "engine/time/interrupt.h"

namespace engine {

/// Who is told about a stream: the player's download callback.
struct Listener {
  DOWNLOADPROC* proc = nullptr;  ///< may be null
  uintptr_t user = 0;
  bool wants_status = false;
};

/// Tells the listener what the decoder has passed, bytes and titles in the stream's
/// order, on a thread of its own: neither a slow disk behind the callback nor a
/// silent network makes the other wait, and titles come with their sound.
class Delivery {
 public:
  using TitleSink = std::function<void(const std::string& text)>;

  /// `interrupt` and `buffer` belong to the stream and outlive this. `title` is
  /// called on the thread, at the title's place among the listener's bytes.
  Delivery(Listener listener, const Interrupt& interrupt, DownloadBuffer& buffer, TitleSink title);
  /// Joins.
  ~Delivery();
  Delivery(const Delivery&) = delete;
  Delivery& operator=(const Delivery&) = delete;

  /// Tells a text of the server at once, on the calling thread.
  void tellStatus(const std::string& text);

  bool isOwnThread() const { return std::this_thread::get_id() == id_.load(); }
  /// Waits for the thread's end, which interrupt and a closed buffer bring.
  void join();

 private:
  void run();
  void deliver(const DownloadBuffer::Passed& passed);
  void tell(const void* bytes, size_t length);

  const Listener listener_;
  const Interrupt& interrupt_;
  DownloadBuffer& buffer_;
  const TitleSink title_;

  base::Mutex callback_mutex_;  ///< one callback at a time
  std::atomic<std::thread::id> id_;
  base::Mutex join_mutex_;
  std::thread thread_;  // last: it uses the rest
};

}  // namespace engine
