#pragma once

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "app/captions.h"
#include "app/desktop.h"
#include "app/tray_icon.h"
#include "base/mutex.h"
#include "menu/menu_model.h"
#include "player/audio_library.h"
#include "player/player_view.h"
#include "player/recorder.h"
#include "player/volume.h"

namespace player {

/// What playback works with; all of it must outlive the playback.
struct PlaybackParts {
  const AudioLibrary& library;
  PlayerView& view;
  app::Desktop& desktop;
  app::TrayIcon& icon;
  menu::MenuItem& subplayerplay;
  menu::MenuItem& mnurecordstream;
  const app::Messages& messages;
  Volume& volume;
  Recorder& recorder;
  const std::vector<std::string>& streamlist;  ///< addresses of the last playlist read
  std::string datapath;                        ///< where the last playlist is saved
};

/// Opens, plays and stops the one stream. A worker opens and fills the buffer,
/// then leaves the stream to the library. Functions without a note are the
/// user-interface thread's. At most one object at a time, see current_.
class Playback {
 public:
  explicit Playback(const PlaybackParts& parts);
  ~Playback();
  Playback(const Playback&) = delete;
  Playback& operator=(const Playback&) = delete;

  /// Starts on entry `index` of the playlist; beeps if one is being opened already.
  void startplayer(int index);
  /// Stops what plays, and what is still being opened.
  void stopplayer();
  /// Play or stop, whichever changes something.
  void toggle();

  /// True from startplayer to stopplayer or a failure.
  [[nodiscard]] bool isActive() const { return active_; }

  /// Switches recording, in the menu, the window and the recorder.
  void recordstatus(bool wanted);
  void mnurecordstream_Click() { recordstatus(!parts_.mnurecordstream.Checked); }

  /// Frees the library, whatever it is doing, and waits for the worker. Nothing
  /// plays afterwards. The destructor does it too.
  void shutDown();

  /// Element of the stream list that entry N of the menu plays. The list's order
  /// and the menu's differ on purpose.
  [[nodiscard]] static int elementOf(int entry) { return entry < 5 ? 2 * entry : 2 * entry - 9; }

 private:
  /// The library passes back a user value in 32 bits, too narrow for an address on
  /// x64, and the player hands it 0: so the callbacks find the object here.
  static std::atomic<Playback*> current_;
  static void BASS_CALL DownloadProc(const void* buffer, BASS_DWORD length, uintptr_t user);
  static void BASS_CALL MetaSync(HSYNC handle, BASS_DWORD channel, uintptr_t data, uintptr_t user);

  [[nodiscard]] bool playlistSaved() const;

  // Worker.
  void PlayStreamThread(int entry);
  bool openStream(int entry);
  bool fillBuffer();
  void readHeaders();
  void play();
  void showNothingPlays() noexcept;

  // Any thread.
  void DoMeta(const char* tag);
  void received(const void* buffer, BASS_DWORD length);
  void serverText(const std::string& text);
  void ended();
  void showEnd() REQUIRES(mutex_);
  void freeStream();
  [[nodiscard]] HSTREAM stream();
  [[nodiscard]] std::string shownBitrate();

  /// Writes a label, unless the listener has stopped what it tells of.
  void show(void (PlayerView::*label)(std::string), std::string text);
  [[nodiscard]] bool stopped();
  /// Sleeps until the next look at the buffer or the stop; true: stopped.
  [[nodiscard]] bool stoppedWithin(int milliseconds);
  void requestStop();

  const PlaybackParts parts_;
  int volume_listener_ = 0;

  // Set by startplayer before its worker runs, read by the worker only.
  std::vector<std::string> addresses_;
  std::string msgplayerstatus_;

  base::Mutex mutex_;
  base::Condition stop_signal_;
  bool stopped_ GUARDED_BY(mutex_) = true;
  bool ended_ GUARDED_BY(mutex_) = false;  ///< the stream has, by itself
  HSTREAM hStream_ GUARDED_BY(mutex_) = 0;
  std::string bitrate_ GUARDED_BY(mutex_);  ///< as shown, once the headers are known

  std::atomic<bool> active_ = false;
  std::atomic<bool> playerthread_ = false;  // a worker runs
  std::jthread worker_;
};

}  // namespace player
