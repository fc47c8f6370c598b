// The player with the real engine and real streams, from click to sound.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "base/files.h"
#include "tests/player/real_player.h"

namespace {

using namespace std::chrono_literals;
using engine_test::radio;
using engine_test::Station;

class RealPlayback : public testing::Test, public RealPlayer {
 protected:
  /// Whether that station's tone comes to be the last half second's sound.
  bool sounds(double tone) {
    constexpr std::size_t kHalf = engine_test::Tape::kRate / 2;
    return eventually([&] {
      const std::vector<float> sound = reel->sound();
      return sound.size() > kHalf && engine_test::hasTone({sound.end() - kHalf, sound.end()}, tone);
    });
  }
  [[nodiscard]] std::string recorded(const std::string& title) const {
    return base::readWhole(folder.path() + "\\" + title + ".mp3").value_or("");
  }
};

TEST_F(RealPlayback, PlaysAndRecordsAStation) {
  const Station station = radio().station("mp3", 44100);
  playback.recordstatus(true);
  play(radio().stream(station));
  EXPECT_TRUE(sounds(station.tone));
  EXPECT_EQ(view.now("lblName"), station.name);
  EXPECT_EQ(view.now("lblBPS"), "bitrate: " + std::to_string(station.kbit));
  EXPECT_EQ(view.now("lblFormat"), "mp3");
  const std::string title = view.now("lblSong");
  ASSERT_FALSE(title.empty());

  EXPECT_TRUE(eventually([&] { return recorded(title).size() >= 1000; }));
  EXPECT_EQ(recorded(title).substr(0, 2), "\xff\xfb");
  playback.stopplayer();
  const std::size_t size = recorded(title).size();
  std::this_thread::sleep_for(300ms);
  EXPECT_EQ(recorded(title).size(), size);
  EXPECT_EQ(view.now("lblName"), "stop");
}

TEST_F(RealPlayback, ChangesToAnotherStation) {
  play(radio().stream(radio().station("mp3", 44100)));
  ASSERT_TRUE(view.waitFor("lblFormat", "mp3"));
  const Station next = radio().station("mp3", 22050);
  play(radio().stream(next));
  EXPECT_TRUE(sounds(next.tone));
  EXPECT_EQ(view.now("lblName"), next.name);
}

TEST_F(RealPlayback, SaysThatAFormatIsNotSupported) {
  play(radio().stream(radio().station("aac", 44100)));
  ASSERT_TRUE(view.waitFor("lblSong", "not playing"));
  ASSERT_TRUE(view.waitFor("playing", "no"));
  EXPECT_EQ(view.now("error"),
            "Can't play the stream\r\n\r\nError Code : 41\r\nUnsupported Fileformat\r\n"
            "Stream not Online or Unsupported Fileformat");
}

TEST_F(RealPlayback, StopsWhileTheServerIsSilentAndPlaysTheNext) {
  engine_test::ScriptedServer silent;
  play(silent.url());
  silent.accept();
  const auto stopped = std::chrono::steady_clock::now();
  playback.stopplayer();
  const Station next = radio().station("mp3", 44100);
  play(radio().stream(next));
  EXPECT_LT(std::chrono::steady_clock::now() - stopped, 2s);  // far below all time-outs
  EXPECT_TRUE(sounds(next.tone));
  EXPECT_EQ(view.now("error"), "(never)");
}

}  // namespace
