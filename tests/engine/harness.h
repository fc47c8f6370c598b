#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "engine/abi/bass.h"
#include "engine/sound/output.h"
#include "tests/engine/tones.h"
#include "tests/support/eventually.h"
#include "tests/support/loopback_servers.h"

/// What the engine's tests share: an output that keeps what it is given, and a listener
/// that does what the player does.
namespace engine_test {

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

}  // namespace engine_test
