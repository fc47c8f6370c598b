#pragma once

#include <deque>
#include <functional>
#include <mutex>

#include "window/window.h"

namespace window {

/// The one road from other threads to the user interface: closures run in order on
/// the thread that made the queue, from any message loop of it (menus and message
/// boxes included). Make it before the threads that post and let it die after them.
class UiQueue : private Window {
 public:
  UiQueue();
  ~UiQueue() override;

  /// Any thread, never blocks on the user interface. Dropped once the queue is
  /// closed. An exception of the closure is reported to the debugger only.
  void post(std::function<void()> task);

  /// Drops what waits and what is posted from now on. User-interface thread.
  void close();

 private:
  std::optional<LRESULT> onMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  std::function<void()> takeNext();
  void announce();  ///< with the mutex held

  std::mutex mutex_;
  std::deque<std::function<void()>> tasks_;
  bool closed_ = false;
  bool announced_ = false;  ///< a message for the tasks is on its way
};

}  // namespace window
