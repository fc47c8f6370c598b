#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>

#include "demo_radio/habits.h"
#include "demo_radio/request.h"
#include "demo_radio/socket.h"
#include "demo_radio/world.h"

namespace demo_radio {

/// What is on air: every station runs on from the server's start, whether
/// somebody listens or not, so that all its listeners hear the same.
class Broadcast {
 public:
  struct Options {
    std::string sounds;  ///< folder that make_sounds filled
    int burst = 65536;   ///< bytes of the past that a new listener gets at once
    double song_seconds = 20;
    int metaint = 8192;  ///< bytes of sound between titles
  };
  /// Throws std::runtime_error when a sound is missing.
  explicit Broadcast(Options options);

  /// Sends the station until the listener leaves. Any thread.
  void listen(Socket& socket, const Station& station, const Request& request, const Habits& habits);

  [[nodiscard]] int listeners() const { return listeners_; }

 private:
  class Sender;
  [[nodiscard]] const std::string& loopOf(const Station& station) const;

  Options options_;
  std::map<std::string, std::string> loops_;  ///< by sound file
  std::string noise_;
  Clock::time_point start_ = Clock::now();
  std::atomic<int> listeners_ = 0;
};

}  // namespace demo_radio
