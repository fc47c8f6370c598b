#pragma once

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/engine/harness.h"

namespace engine_test {

/// A web server on the loopback address whose documents the test puts in, and may
/// change at any time. One connection after another, one answer each.
class WebServer {
 public:
  WebServer();
  ~WebServer();
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  /// `path` begins with a slash.
  std::string url(const std::string& path) const { return server_.url() + path.substr(1); }
  void put(const std::string& path, const std::string& body, const std::string& type = "");
  /// The answer as it goes over the line, head and all.
  void putRaw(const std::string& path, const std::string& answer);
  /// From now on answers requests for a range with that, and not with all.
  void serveRanges() { ranges_ = true; }
  /// From now on every other answer ends in its middle; lists and keys are answered whole.
  void breakOff() { breaks_ = true; }
  /// For that path, or for any.
  size_t timesAsked(const std::string& path = "") const;

 private:
  void serve();
  std::string answerTo(const std::string& request);
  std::string rangeOf(const std::string& answer, const std::string& range) const;

  ScriptedServer server_;
  mutable std::mutex mutex_;
  std::map<std::string, std::string> answers_;
  std::vector<std::string> asked_;
  std::atomic<bool> over_ = false, ranges_ = false, breaks_ = false;
  bool broke_ = false;   ///< the last answer
  std::thread serving_;  // last: it uses the rest
};

/// The files that a shell command makes in the folder it runs in, by their names.
std::map<std::string, std::string> filesOf(const std::string& command);

/// ffmpeg's words for a sine of that frequency, as its input.
std::string sineInput(int frequency, double seconds);

/// Words for encodedSine: bare MPEG frames from the first byte on.
inline const std::string kMp3 = "-c:a libmp3lame -b:a 128k -write_xing 0 -id3v2_version 0 ";

/// The file that ffmpeg makes with these words (its name is added to them), from a
/// sine of that frequency.
std::string encodedSine(int frequency, double seconds, const std::string& words = kMp3,
                        const std::string& file = "x.mp3");

/// Checks that the stream is of that type, and for that long nothing but a sine of 440 Hz.
void hear440(Session& session, HSTREAM stream, BASS_DWORD type, double seconds = 0.5);

}  // namespace engine_test
