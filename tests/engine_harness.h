#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "engine/bass.h"
#include "engine/output.h"
#include "tests/eventually.h"
#include "tests/player_folder.h"

/// What the engine's tests share: servers, an output that keeps what it is given,
/// and a listener that does what the player does.
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

/// Plays to nowhere at a device's pace and remembers.
class Tape final : public engine::OutputFactory {
 public:
  struct Reel {
    std::vector<float> sound(size_t from = 0) const;

    std::atomic<bool> has_device{true};  ///< else none opens, and an open one fails
    std::atomic<bool> swallows{false};   ///< takes sound as fast as it comes, keeps none
    std::atomic<int> opened{0};          ///< devices
    std::atomic<int> gaps{0};            ///< times that a device had nothing to play
    std::atomic<uint64_t> frames{0};     ///< all that came
    mutable std::mutex mutex;
    std::vector<float> left;  ///< left channel of all outputs in a row
  };
  Tape() : reel_(std::make_shared<Reel>()) {}
  std::unique_ptr<engine::Output> open(const engine::Interrupt& interrupt) override;
  std::shared_ptr<Reel> reel() const { return reel_; }

  static constexpr unsigned kRate = 48000;

 private:
  std::shared_ptr<Reel> reel_;
};

/// An initialised engine that plays to a tape, for one test.
class Session {
 public:
  Session();
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// What has been played since the last call, of which the first seconds are at
  /// least `seconds`; waits for that much, at most 20 s.
  std::vector<float> listen(double seconds);
  std::shared_ptr<Tape::Reel> reel() const { return reel_; }

 private:
  std::shared_ptr<Tape::Reel> reel_;
  size_t heard_ = 0;
};

/// Stands where the player stands: its callbacks note what came.
class Listener {
 public:
  struct Note {
    enum Kind { status, title, end } kind;
    std::string text;     ///< status and title
    size_t position = 0;  ///< bytes before it
  };

  /// BASS_StreamCreateURL with this listener's callback.
  HSTREAM create(const std::string& url);
  /// The player's whole procedure up to ChannelPlay. 0: it did not get that far.
  HSTREAM play(const std::string& url);
  /// The same, with what the server is to begin its answer with.
  HSTREAM play(ScriptedServer& server, const std::string& answer);
  void syncTitles(HSTREAM stream);

  std::vector<Note> notes(Note::Kind kind) const;
  std::vector<std::string> texts(Note::Kind kind) const;
  /// How often it was told that status text.
  size_t count(const std::string& status) const;
  std::string bytes() const;
  /// Waits until that many notes of a kind are there.
  bool waitFor(Note::Kind kind, size_t count) const;
  /// Waits until it has been told as many bytes, which are to be these.
  bool hears(const std::string& bytes) const;

 private:
  static void BASS_CALL download(const void* buffer, BASS_DWORD length, uintptr_t user);
  static void BASS_CALL titleSync(HSYNC sync, BASS_DWORD channel, uintptr_t data, uintptr_t user);

  mutable std::mutex mutex_;
  std::vector<Note> notes_;
  std::string bytes_;
};

/// Share of the samples' power that is at `frequency` (and a little around it).
double toneShare(const std::vector<float>& samples, double frequency);
double rootMeanSquare(const std::vector<float>& samples);
/// Whether there is sound with that tone, of a station's bells, in it.
bool hasTone(const std::vector<float>& samples, double frequency);
/// Those of the known tones that the sound has, in its order, each of at least that
/// many seconds.
std::vector<int> tonesIn(const std::vector<float>& sound, const std::vector<int>& known,
                         double least = 0.3);

/// What a server sends where a title may stand; without a title that there is none.
std::string titleBlock(const std::string& title = "");

/// A sound of the demo radio as it is sent, e.g. its station's MP3.
std::string soundBytes(const std::string& file);

}  // namespace engine_test
