#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "engine/engine.h"
#include "player/audio_setup.h"
#include "tests/engine/harness.h"
#include "tests/player/fakes.h"
#include "tests/player/linked_engine.h"

/// The player with the real engine, into a tape.
struct RealPlayer : PlayerParts {
  RealPlayer() {
    folder.put("bass.dll");  // the engine is linked; only its presence is asked for
    folder.put("bass_aac.dll");
    folder.put("tmpdata.pls");
    auto tape = std::make_unique<engine_test::Tape>();
    reel = tape->reel();
    engine::instance().useOutput(std::move(tape));
    const auto link = [](const std::string&, player::AudioLibrary& into) {
      into = linkedEngine();
      return true;
    };
    EXPECT_TRUE(player::initaudio({library, desktop, view, folder.path(), nullptr, link, [] {}}));
  }

  /// As soon as what was started before is no longer being opened.
  void play(const std::string& address) {
    streamlist = {address, ""};
    EXPECT_TRUE(eventually([&] {
      const int beeps = desktop.beeps;
      playback.startplayer(0);
      return desktop.beeps == beeps;
    }));
  }

  std::shared_ptr<engine_test::Tape::Reel> reel;
};
