// What is recorded from a real server with many titles, beside what another program
// got of the same stream. KESTREL_LONG=1 takes an hour of sound and 200 titles.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <map>
#include <thread>

#include "app/files.h"
#include "tests/icecast.h"
#include "tests/real_player.h"

namespace {

using namespace std::chrono_literals;

/// Plays as fast as sound comes.
class Quick final : public engine::OutputFactory {
 public:
  std::unique_ptr<engine::Output> open(const engine::Interrupt&) override {
    class Sink final : public engine::Output {
      unsigned rate() const override { return 44100; }
      bool write(std::span<const float>& samples) override { return samples = {}, true; }
      void flush() override {}
      unsigned pendingMilliseconds() override { return 0; }
      void finish(std::span<const float>) override {}
    };
    return std::make_unique<Sink>();
  }
};

/// What another listener of the same stream got.
struct Capture {
  std::string sound;
  std::map<std::string, std::size_t> titles;  ///< where in the sound each began
};

/// Of an answer with titles every `interval` bytes.
Capture captured(const std::string& answer, std::size_t interval) {
  constexpr std::string_view kName = "StreamTitle='";
  Capture result;
  std::size_t at = 0;
  while (at + interval < answer.size()) {
    result.sound.append(answer, at, interval);
    at += interval;
    const auto length = static_cast<std::size_t>(static_cast<unsigned char>(answer[at])) * 16;
    const std::string block = answer.substr(at + 1, length);
    at += 1 + length;
    if (!block.starts_with(kName)) continue;
    const std::string title = block.substr(kName.size(), block.find("';") - kName.size());
    result.titles.emplace(title, result.sound.size());
  }
  return result;
}

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
  constexpr std::size_t kMostWithoutHeader = 16384;
  engine_test::Icecast server({"-c:a", "libmp3lame", "-b:a", "128k", "-f", "mp3"}, "audio/mpeg",
                              65535, kSpeed, "anoisesrc=sample_rate=44100:seed=7");
  const engine_test::Folder folder;
  const std::string answer = folder.path() + "/answer", head = folder.path() + "/head";
  const auto other = std::make_unique<engine_test::Process>(std::vector<std::string>{
      "curl", "-s", "-N", "-H", "Icy-MetaData: 1", "-D", head, "-o", answer, server.url()});
  // Its burst is to begin before ours.
  for (int i = 0; i < 500 && app::readWhole(answer).value_or("").empty(); ++i)
    std::this_thread::sleep_for(20ms);
  RealPlayer player(std::make_unique<Quick>());
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

  const std::string headers = app::readWhole(head).value_or("");
  constexpr std::string_view kInterval = "icy-metaint:";
  ASSERT_NE(headers.find(kInterval), std::string::npos) << headers;
  const auto interval = static_cast<std::size_t>(
      std::atoi(headers.c_str() + headers.find(kInterval) + kInterval.size()));
  const Capture other_heard = captured(app::readWhole(answer, 1u << 30).value_or(""), interval);
  // Each listener has its own places for titles, an interval apart; blocks of the stream
  // without a header are not recorded.
  const auto slack = static_cast<std::ptrdiff_t>(interval + kMostWithoutHeader);
  std::size_t end = 0;
  std::size_t bytes = 0;
  int marks = 0;
  // The last was broken off.
  for (int song = 0; song + 1 < count; ++song) {
    const auto file = app::readWhole(player.folder.path() + "\\" + name(song) + ".mp3");
    ASSERT_TRUE(file && file->size() > 1000) << name(song);
    expectHeaderInFront(*file, name(song));
    const std::string body = file->substr(3);
    const std::size_t begin = other_heard.sound.find(body);
    ASSERT_NE(begin, std::string::npos) << name(song) << " is not what was sent";
    // Of two titles in one interval it would have heard only the second.
    const auto mark = other_heard.titles.find(name(song));
    if (mark != other_heard.titles.end()) {
      ++marks;
      EXPECT_LT(std::abs(static_cast<std::ptrdiff_t>(begin - mark->second)), slack) << name(song);
    }
    if (song > 0) {
      EXPECT_GE(begin, end) << name(song);
      EXPECT_LE(begin - end, kMostWithoutHeader) << "lost before " << name(song);
    }
    end = begin + body.size();
    bytes += body.size();
  }
  EXPECT_GT(marks, count / 2);
  std::printf("%d songs, %.1f MB, %.0f minutes of sound\n", count - 1,
              static_cast<double>(bytes) / 1e6, static_cast<double>(bytes) / 16000 / 60);
}

}  // namespace
