#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

#include "tests/support/temporary_folder.h"

/// What the engine's tests listen to, on the loopback address.
namespace engine_test {

/// A station as the demo radio lists it.
struct Station {
  std::string mount, codec, name;
  unsigned kbit = 0;
  double tone = 0;  ///< Hz
  unsigned rate = 0;
};

/// A program that runs until this ends.
class Process {
 public:
  explicit Process(std::vector<std::string> words);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

 private:
  pid_t id_ = 0;
};

std::string contents(const std::string& file);

/// A loopback port that nobody listens on now.
int freePort();
/// Body of the answer to a GET from the loopback address; empty where nobody listens.
std::string fetch(int port, const std::string& path, const std::string& headers = "");

/// A running demo radio on the loopback address.
class DemoRadio {
 public:
  DemoRadio();
  DemoRadio(const DemoRadio&) = delete;
  DemoRadio& operator=(const DemoRadio&) = delete;

  std::string url(const std::string& path) const;
  /// The first station of that codec and rate; fails the test without one.
  Station station(const std::string& codec, unsigned rate) const;
  std::string stream(const Station& station, const std::string& habits = "") const;

 private:
  TestFolder folder_;
  Process process_;
  int port_ = 0;
  std::vector<Station> stations_;
};

/// One for all tests of a program.
DemoRadio& radio();

/// One connection after another whose answer the test writes itself.
class ScriptedServer {
 public:
  /// backlog_full: takes no further connection, so that a client's connect hangs.
  explicit ScriptedServer(bool backlog_full = false);
  ~ScriptedServer();
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;

  std::string url() const { return "http://127.0.0.1:" + std::to_string(port_) + "/"; }
  /// Waits for the client and its whole request, and returns that.
  std::string accept();
  /// Connections that nobody accepted yet.
  bool isAsked(std::chrono::milliseconds patience) const;
  void send(const std::string& bytes) const;
  /// Both: the request.
  std::string answer(const std::string& bytes);
  void close();  ///< properly
  void reset();
  /// Refuses connections, until it comes back.
  void leave();
  void comeBack();
  /// Ends an accept() in another thread, and takes no more.
  void stop();

 private:
  void listen(int backlog);

  int listener_ = -1, client_ = -1;
  std::vector<int> fillers_;
  int port_ = 0;
};

/// What a server sends where a title may stand; without a title that there is none.
std::string titleBlock(const std::string& title = "");

/// A sound of the demo radio as it is sent, e.g. its station's MP3.
std::string soundBytes(const std::string& file);

}  // namespace engine_test
