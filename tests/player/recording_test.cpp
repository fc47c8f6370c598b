// What is recorded from a real server with many titles, beside what another program
// got of the same stream. KESTREL_LONG=1 takes an hour of sound and 200 titles.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "base/files.h"
#include "tests/player/real_player.h"
#include "tests/support/icecast.h"

namespace {

using namespace std::chrono_literals;

/// A recording is a copy of its first frame header that is not at the very beginning,
/// and then the stream.
void expectHeaderInFront(const std::string& file, const std::string& title) {
  const std::size_t header = file.find("\xff\xfb", 3 + 1);
  ASSERT_NE(header, std::string::npos) << title;
  EXPECT_EQ(file.substr(0, 3), file.substr(header, 3)) << title;
}

TEST(Recording, HoldsEachSongOfARealServerToTheByte) {
  const bool is_long = std::getenv("KESTREL_LONG") != nullptr;
  const int count = is_long ? 200 : 20;
  const auto apart = is_long ? 250ms : 100ms;
  constexpr int kSpeed = 60;
  // Blocks of the stream without a frame's header are not recorded.
  constexpr std::size_t kMostWithoutHeader = 16384;
  engine_test::IcecastServer server(engine_test::kIcecastMp3, "audio/mpeg", 65535, kSpeed,
                                    "anoisesrc=sample_rate=48000:seed=7");
  const TestFolder folder;
  const std::string answer = folder.path() + "/answer";
  const engine_test::Process other({"curl", "-s", "-N", "-o", answer, server.url()});
  // Its burst is to begin before ours.
  ASSERT_TRUE(eventually([&] { return !engine_test::contents(answer).empty(); }));
  RealPlayer player;
  player.reel->swallows = true;
  player.playback.recordstatus(true);
  player.play(server.url());
  ASSERT_TRUE(player.view.waitFor("lblFormat", "mp3"));
  const auto name = [](int song) { return "Song " + std::to_string(song); };
  for (int song = 0; song < count; ++song) {
    server.setTitle("Song%20" + std::to_string(song));
    ASSERT_TRUE(player.view.waitFor("lblSong", name(song)));
    std::this_thread::sleep_for(apart);
  }
  player.playback.stopplayer();

  const std::string sent = engine_test::contents(answer);
  std::size_t end = 0;
  std::size_t bytes = 0;
  // The last was broken off.
  for (int song = 0; song + 1 < count; ++song) {
    const auto file = base::readWhole(player.folder.path() + "\\" + name(song) + ".mp3");
    ASSERT_TRUE(file && file->size() > 1000) << name(song);
    expectHeaderInFront(*file, name(song));
    const std::string body = file->substr(3);
    const std::size_t begin = sent.find(body);
    ASSERT_NE(begin, std::string::npos) << name(song) << " is not what was sent";
    if (song > 0) {
      EXPECT_GE(begin, end) << name(song);
      EXPECT_LE(begin - end, kMostWithoutHeader) << "lost before " << name(song);
    }
    end = begin + body.size();
    bytes += body.size();
  }
  std::printf("%d songs, %.1f MB, %.0f minutes of sound\n", count - 1,
              static_cast<double>(bytes) / 1e6, static_cast<double>(bytes) / 16000 / 60);
}

}  // namespace
