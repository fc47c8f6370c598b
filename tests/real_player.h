#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "engine/engine.h"
#include "player/audio_setup.h"
#include "player/playback.h"
#include "tests/engine_harness.h"
#include "tests/player_fakes.h"
#include "tests/player_folder.h"

/// The player with the real engine, into an output of the test's.
class RealPlayer {
 public:
  explicit RealPlayer(std::unique_ptr<engine::OutputFactory> output) {
    folder.put("bass.dll");  // the engine is linked; only its presence is asked for
    folder.put("bass_aac.dll");
    folder.put("tmpdata.pls");
    engine::instance().useOutput(std::move(output));
    EXPECT_TRUE(
        player::initaudio({library, desktop, view, folder.path(), nullptr, linkEngine, [] {}}));
  }

  void play(const std::string& address) {
    streamlist = {address, ""};
    playback.startplayer(0);
  }

  player::AudioLibrary library;
  TestFolder folder;
  FakeView view;
  FakeDesktop desktop;
  FakeIcon icon;
  tray::MenuItem subplayerplay{"Play", {}}, mnurecordstream{"Record", {}};
  app::Messages messages;
  player::Volume volume;
  player::Recorder recorder{folder.path()};
  std::vector<std::string> streamlist;
  player::Playback playback{{library, view, desktop, icon, subplayerplay, mnurecordstream, messages,
                             volume, recorder, streamlist, folder.path()}};

 private:
  static bool linkEngine(const std::string&, player::AudioLibrary& library) {
    library = {BASS_GetVersion,     BASS_Init,
               BASS_Free,           BASS_SetConfig,
               BASS_ErrorGetCode,   BASS_PluginLoad,
               BASS_PluginFree,     BASS_StreamCreateURL,
               BASS_StreamFree,     BASS_StreamGetFilePosition,
               BASS_ChannelGetTags, BASS_ChannelSetSync,
               BASS_ChannelGetInfo, BASS_ChannelSetAttributes,
               BASS_ChannelPlay,    BASS_ChannelStop};
    return true;
  }
};
