#pragma once

#include <sys/types.h>
#include <chrono>
#include <string_view>

namespace demo_radio {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

/// Owns a file descriptor.
class Descriptor {
 public:
  explicit Descriptor(int fd = -1) : fd_(fd) {}
  Descriptor(Descriptor&& other) noexcept;
  Descriptor& operator=(Descriptor&& other) noexcept;
  ~Descriptor();
  [[nodiscard]] int get() const { return fd_; }

 private:
  int fd_;
};

/// A client's connection, used by one thread. Everything that waits ends when
/// `stop` becomes readable, which is how the server ends.
class Socket {
 public:
  Socket(Descriptor socket, int stop);

  /// Sends all of it. False when the client is gone, takes nothing for 20 s, or
  /// the server ends.
  [[nodiscard]] bool send(std::string_view bytes);
  /// Bytes received, 0 at the end of the client's data, -1 on failure, time-out or end.
  [[nodiscard]] ssize_t receive(char* buffer, std::size_t size, Milliseconds timeout);
  /// Does nothing for that long. False when the client hung up or the server ends.
  [[nodiscard]] bool pause(Milliseconds time);
  /// Closing from now on resets the connection instead of ending it properly.
  void resetOnClose();
  /// Ends our side of the connection and lets the client read what was sent,
  /// unless it is to be reset.
  void finish();

 private:
  enum class Event { ready, timeout, stopped };
  [[nodiscard]] Event wait(short events, Milliseconds timeout) const;

  Descriptor socket_;
  int stop_;
  bool reset_ = false;
};

/// A socket that listens on 127.0.0.1; port 0 chooses one. Throws
/// std::system_error.
Descriptor listenOnLoopback(int port);
int portOf(const Descriptor& listener);

}  // namespace demo_radio
