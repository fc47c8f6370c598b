// The player with the real engine and real streams, from click to sound.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "app/files.h"
#include "tests/real_player.h"

namespace {

using namespace std::chrono_literals;
using engine_test::Station;

engine_test::DemoRadio& radio() {
  static engine_test::DemoRadio running;
  return running;
}

struct NewTape {
  std::unique_ptr<engine_test::Tape> tape = std::make_unique<engine_test::Tape>();
  std::shared_ptr<engine_test::Tape::Reel> reel = tape->reel();
};

class RealPlayback : public testing::Test, private NewTape, public RealPlayer {
 protected:
  RealPlayback() : RealPlayer(std::move(tape)) {}

  /// Share of the last half second's sound that is the station's tone.
  bool sounds(double tone) {
    const auto end = std::chrono::steady_clock::now() + 15s;
    while (std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(50ms);
      std::vector<float> sound;
      {
        std::lock_guard lock(reel->mutex);
        constexpr std::size_t kHalf = engine_test::Tape::kRate / 2;
        if (reel->left.size() > kHalf) sound.assign(reel->left.end() - kHalf, reel->left.end());
      }
      if (sound.empty() || engine_test::rootMeanSquare(sound) < 0.01) continue;
      if (engine_test::toneShare(sound, tone) > 4 * engine_test::toneShare(sound, tone * 1.06))
        return true;
    }
    return false;
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

  std::optional<std::string> recorded;
  const std::string path = folder.path() + "\\" + title + ".mp3";
  for (int i = 0; i < 100 && (!recorded || recorded->size() < 1000); ++i) {
    std::this_thread::sleep_for(50ms);
    recorded = app::readWhole(path);
  }
  ASSERT_TRUE(recorded) << path;
  EXPECT_EQ(recorded->substr(0, 2), "\xff\xfb");
  playback.stopplayer();
  const std::size_t size = app::readWhole(path)->size();
  std::this_thread::sleep_for(300ms);
  EXPECT_EQ(app::readWhole(path)->size(), size);
  EXPECT_EQ(view.now("lblName"), "stop");
}

TEST_F(RealPlayback, GoesOnRecordingWhenALostConnectionIsBack) {
  const std::string sound = engine_test::soundBytes("bells-00.mp3").substr(0, 48'000);
  const std::string head =
      "HTTP/1.0 200 OK\r\nicy-name:Here\r\nicy-br:128\r\nicy-metaint:24000\r\n\r\n";
  const std::string title = "\2StreamTitle='Song';" + std::string(13, '\0');
  const std::string path = folder.path() + "\\Song.mp3";
  engine_test::ScriptedServer server;
  playback.recordstatus(true);
  play(server.url());
  server.accept();
  server.send(head + sound.substr(0, 24'000) + title);
  server.close();
  server.accept();
  server.send(head + sound.substr(24'000) + title);
  EXPECT_TRUE(view.waitFor("lblBPS", "bitrate: 128"));
  std::string recorded;
  for (int i = 0; i < 400 && recorded.size() < 46'000; ++i) {
    std::this_thread::sleep_for(50ms);
    recorded = app::readWhole(path).value_or("");
  }
  // Behind a copy of its first frame header the file has both connections' sound.
  ASSERT_GT(recorded.size(), 46'000U);
  const std::string all = recorded.substr(3);
  EXPECT_NE(sound.find(all), std::string::npos);
  const std::vector<std::string> shown = view.history("lblBPS");
  EXPECT_NE(std::find(shown.begin(), shown.end(), "reconnecting..."), shown.end());
  EXPECT_EQ(view.now("lblName"), "Here");
  EXPECT_TRUE(playback.isActive());
  // And the end of the stream is the end of playing.
  server.close();
  server.accept();
  server.send("HTTP/1.0 404 Not Found\r\n\r\n");
  EXPECT_TRUE(view.waitFor("lblName", "stop"));
  EXPECT_FALSE(playback.isActive());
}

TEST_F(RealPlayback, ChangesToAnotherStation) {
  play(radio().stream(radio().station("mp3", 44100)));
  ASSERT_TRUE(view.waitFor("lblFormat", "mp3"));
  const Station next = radio().station("mp3", 22050);
  for (int i = 0; i < 100; ++i) {  // beeps until the first worker has left
    const int beeps = desktop.beeps;
    play(radio().stream(next));
    if (desktop.beeps == beeps) break;
    std::this_thread::sleep_for(10ms);
  }
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
  do {
    desktop.beeps = 0;
    std::this_thread::sleep_for(10ms);
    play(radio().stream(next));
  } while (desktop.beeps > 0 && std::chrono::steady_clock::now() - stopped < 5s);
  EXPECT_LT(std::chrono::steady_clock::now() - stopped, 2s);  // far below all time-outs
  EXPECT_TRUE(sounds(next.tone));
  EXPECT_EQ(view.now("error"), "(never)");
}

TEST_F(RealPlayback, LeavesWhateverTheServerDoes) {
  struct Stuck {
    const char* where;
    std::string answer;
  };
  const Stuck cases[] = {{"headers", ""},
                         {"sound", "HTTP/1.0 200 OK\r\nContent-Type: audio/mpeg\r\n\r\n"}};
  for (const Stuck& each : cases) {
    engine_test::ScriptedServer server;
    play(server.url());
    server.accept();
    server.send(each.answer);
    std::this_thread::sleep_for(200ms);
    const auto start = std::chrono::steady_clock::now();
    playback.shutDown();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s) << each.where;
    EXPECT_TRUE(library.Init(-1, 44100, 0, nullptr, nullptr));
  }
  EXPECT_EQ(view.now("error"), "(never)");
}

}  // namespace
