#pragma once

#include <optional>
#include <string>

#include "app/captions.h"
#include "app/hosts.h"
#include "app/startup.h"
#include "dialogs/reload_window_win.h"
#include "directory/query.h"
#include "directory/reload.h"
#include "directory/station_lists.h"
#include "directory/transfer_win.h"
#include "player/audio_library.h"
#include "player/playback.h"
#include "player/player_window_win.h"
#include "player/recorder.h"
#include "player/volume.h"
#include "player/volume_popup_win.h"
#include "program/desktop_win.h"
#include "program/message_window_win.h"
#include "tray/launch.h"
#include "tray/main_window_win.h"
#include "tray/menu_actions.h"
#include "tray/playlist.h"
#include "tray/station_menus.h"
#include "tray/tray_icon_win.h"
#include "window/ui_queue.h"

namespace program {

/// All parts of the running program, and the order in which they come and go. Lives
/// on the user-interface thread.
class Program final : private tray::MenuActions {
 public:
  /// Makes the windows, reads the settings and fills the menus; nothing is in the
  /// notification area yet. `captions` outlives this.
  Program(const app::Startup& startup, app::Captions& captions);
  ~Program() override;
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  /// Adds the tray icon and starts the audio library. False: without audio the
  /// program must end, and the user has been told.
  [[nodiscard]] bool start();

 private:
  // What the menus ask for.
  void startplayer(int index) override { playback_.startplayer(index); }
  void stopplayer() override { playback_.stopplayer(); }
  void mnuplayerwindow_Click() override { frmNetRadio_.mnuplayerwindow_Click(); }
  void mnuplayervolume_Click() override { volform_.mnuplayervolume_Click(); }
  void mnurecordstream_Click() override { playback_.mnurecordstream_Click(); }
  void lbstation(std::string_view caption) override;
  void mgenreall_Click() override { reload_.reloadall(); }
  void editfavs() override;
  bool searchform() override;
  void mnusetup_Click() override;
  void mnuabout_Click() override;
  void mnuquit_Click() override { shutDown(); }

  [[nodiscard]] tray::Form1Events form1Events();
  [[nodiscard]] player::PlayerActions playerActions();
  void placePlayer();
  void preloadforms();
  void shutDown();
  [[nodiscard]] bool asking() const;

  // First, since the windows below may ask while the others are still being made.
  bool ready_ = false;  ///< the start is over: before, a click has nothing to work with
  bool ended_ = false;

  // Each works with the ones before it, so the end comes in the opposite order:
  // playback first, then the windows, the tray icon and the main window.
  app::Captions& captions_;
  const app::Paths paths_;
  menu::MenuTree tree_;
  app::Settings settings_;
  const app::Hosts hosts_;
  app::Messages messages_;
  DesktopWin desktop_;
  window::UiQueue queue_;
  tray::Form1 form1_;
  tray::TrayIconWin icon_;
  player::Volume volume_;
  player::VolForm volform_;
  player::PlayerWindow frmNetRadio_;
  dialogs::ReloadForm reloadform_;
  directory::WinHttpTransfer transfer_;
  directory::StationLists lists_;
  KesMessage kesmessage_;
  tray::Playlist playlist_;
  tray::Launch launch_;
  player::AudioLibrary library_;
  player::Recorder recorder_;
  player::Playback playback_;
  directory::Query query_;
  directory::Reload reload_;
  tray::StationMenus menus_;
  std::string search_words_;  ///< of the last search, for the next one to begin with
};

}  // namespace program
