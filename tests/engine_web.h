#pragma once

#include <condition_variable>
#include <list>
#include <map>
#include <mutex>
#include <string>

#include <thread>
#include <vector>
#include "tests/engine_harness.h"

namespace engine_test {

/// A web server on the loopback address whose documents the test puts in, and may
/// change at any time. One answer a connection.
class WebServer {
 public:
  WebServer();
  ~WebServer();
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  std::string url(const std::string& path) const;
  void put(const std::string& path, const std::string& body, const std::string& type = "");
  /// The answer as it goes over the line, head and all.
  void putRaw(const std::string& path, const std::string& answer);
  /// From now on answers requests for a range with that, and not with all.
  void serveRanges();
  /// Paths asked for so far, in order; behind them the range, if any, as "1-2".
  std::vector<std::string> asked() const;

 private:
  void accept();
  void serve(int client);
  std::string answerTo(const std::string& request);

  int listener_ = -1, port_ = 0;
  mutable std::mutex mutex_;
  std::map<std::string, std::string> answers_;
  std::vector<std::string> asked_;
  std::vector<int> clients_;
  bool over_ = false, ranges_ = false;
  std::list<std::thread> serving_;
  std::thread accepting_;  // last: it uses the rest
};

/// The files that a shell command makes in the folder it runs in, by their names.
std::map<std::string, std::string> filesOf(const std::string& command);

/// ffmpeg's words for a sine of that frequency, as its input.
std::string sineInput(int frequency, double seconds);

/// Words for encodedSine: bare MPEG frames from the first byte on.
inline const std::string kMp3 = "-c:a libmp3lame -b:a 128k -write_xing 0 -id3v2_version 0 ";

/// The file that ffmpeg makes with these words (its name is added to them), from a
/// sine of that frequency.
std::string encodedSine(int frequency, double seconds, const std::string& words,
                        const std::string& file);

/// Checks that the stream is of that type, and for that long nothing but a sine of 440 Hz.
void hear440(Session& session, HSTREAM stream, BASS_DWORD type, double seconds = 0.5);

}  // namespace engine_test
