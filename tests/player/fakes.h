#pragma once

#include <atomic>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "app/desktop.h"
#include "app/tray_icon.h"
#include "player/audio_library.h"
#include "player/playback.h"
#include "player/player_view.h"
#include "tests/support/temporary_folder.h"

/// The audio library as a script: it records what is asked of it and answers what
/// the test has put down. One at a time, since the library's functions have no
/// object.
class FakeLibrary {
 public:
  FakeLibrary();
  ~FakeLibrary();

  [[nodiscard]] player::AudioLibrary table() const;

  // Answers.
  BASS_DWORD version = 0x02030000;
  bool loads = true, init_works = true;
  HSTREAM stream = 77;           ///< 0: cannot be opened
  std::vector<BASS_DWORD> ends;  ///< one for each question; the last one stays
  std::vector<BASS_DWORD> downloads, decodes;
  std::string icy_headers;  ///< with its zero bytes
  std::string meta;
  BASS_DWORD ctype = BASS_CTYPE_STREAM_MP3;
  std::atomic<bool> open_hangs = false;  ///< until stopped or freed

  // What the player gave.
  DOWNLOADPROC* download = nullptr;
  SYNCPROC* sync = nullptr;

  void note(std::string call);
  [[nodiscard]] std::vector<std::string> calls() const;
  /// Waits until a call that begins so has been made.
  [[nodiscard]] bool waitFor(const std::string& call) const;

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> calls_;
};

/// The player window's labels as last written, and every text they had.
class FakeView : public player::PlayerView {
 public:
  void lblName(std::string text) override { write("lblName", std::move(text)); }
  void lblSong(std::string text) override { write("lblSong", std::move(text)); }
  void lblBPS(std::string text) override { write("lblBPS", std::move(text)); }
  void lblFormat(std::string text) override { write("lblFormat", std::move(text)); }
  void lbstation(std::string text) override { write("lbstation", std::move(text)); }
  void showPlaying(bool playing) override { write("playing", playing ? "yes" : "no"); }
  void showRecording(bool recording) override { write("recording", recording ? "yes" : "no"); }
  void showError(std::string text) override { write("error", std::move(text)); }

  [[nodiscard]] std::string now(const std::string& label) const;
  [[nodiscard]] std::vector<std::string> history(const std::string& label) const;
  /// Waits until the label has this text.
  [[nodiscard]] bool waitFor(const std::string& label, const std::string& text) const;

 private:
  void write(const std::string& label, std::string text);

  mutable std::mutex mutex_;
  std::map<std::string, std::vector<std::string>> texts_;
};

class FakeDesktop : public app::Desktop {
 public:
  struct Message {
    std::string text, title;
    Icon icon;
  };
  std::vector<Message> messages;
  int beeps = 0;

  void messageBox(std::string_view text, std::string_view title, Icon icon) override {
    messages.push_back({std::string(text), std::string(title), icon});
  }
  void shellopen(std::string_view) override {}
  bool isDangerousExtension(std::string_view) override { return false; }
  void beep() override { ++beeps; }
};

class FakeIcon : public app::TrayIcon {
 public:
  int normal = 0;
  void workicon() override {}
  void normalicon() override { ++normal; }
  void setCaption(std::string_view) override {}
};

/// A playback and all that it works with. What gives the library its functions must
/// outlive it.
struct PlayerParts {
  player::AudioLibrary library;
  TestFolder folder;
  FakeView view;
  FakeDesktop desktop;
  FakeIcon icon;
  menu::MenuItem subplayerplay{"Play", {}}, mnurecordstream{"Record", {}};
  app::Messages messages;
  player::Volume volume;
  player::Recorder recorder{folder.path()};
  std::vector<std::string> streamlist;
  player::Playback playback{{library, view, desktop, icon, subplayerplay, mnurecordstream, messages,
                             volume, recorder, streamlist, folder.path()}};
};
