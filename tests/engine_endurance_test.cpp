// A day of listening and a thousand changes of the station leave memory, threads and
// handles as they were. Small numbers unless the environment asks for the large ones:
// KESTREL_HOURS of sound, KESTREL_CHANGES of the station.
#include <dirent.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "engine/engine.h"
#include "tests/engine_harness.h"

namespace engine_test {
namespace {

using namespace std::chrono_literals;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kMemoryIsOurs = false;  // the sanitizer keeps what was freed
#else
constexpr bool kMemoryIsOurs = true;
#endif

double wish(const char* name, double otherwise) {
  const char* text = std::getenv(name);
  return text == nullptr ? otherwise : std::atof(text);
}

size_t entriesOf(const char* folder) {
  size_t count = 0;
  DIR* open = opendir(folder);
  while (readdir(open) != nullptr) ++count;
  closedir(open);
  return count;
}

/// Memory that no file stands behind, in KiB. What the C library keeps of what was
/// freed, an arena for each few threads, would drown what is looked for.
long privateMemory() {
  malloc_trim(0);
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("RssAnon:")) return std::atol(line.c_str() + 8);
  }
  return 0;
}

/// Takes sound as fast as it comes.
class Bottomless final : public engine::OutputFactory {
 public:
  explicit Bottomless(std::shared_ptr<std::atomic<uint64_t>> frames) : frames_(std::move(frames)) {}
  std::unique_ptr<engine::Output> open(const engine::Interrupt&) override {
    return std::make_unique<Device>(frames_);
  }

 private:
  class Device final : public engine::Output {
   public:
    explicit Device(std::shared_ptr<std::atomic<uint64_t>> frames) : frames_(std::move(frames)) {}
    unsigned rate() const override { return 48000; }
    bool write(std::span<const float>& samples) override {
      *frames_ += samples.size() / kChannels;
      samples = {};
      return true;
    }
    void flush() override {}
    unsigned pendingMilliseconds() override { return 0; }
    void finish(std::span<const float>) override {}

   private:
    std::shared_ptr<std::atomic<uint64_t>> frames_;
  };
  std::shared_ptr<std::atomic<uint64_t>> frames_;
};

/// Sound with a new title every eight seconds.
void sendHours(const ScriptedServer& server, double hours) {
  constexpr size_t kInterval = 16'000;  // a second
  const std::string loop = soundBytes("bells-00.mp3");
  server.send("HTTP/1.0 200 OK\r\nicy-metaint: 16000\r\n\r\n");
  size_t at = 0;
  for (long second = 0; second < static_cast<long>(hours * 3600); ++second) {
    std::string bytes;
    while (bytes.size() < kInterval) {
      const size_t step = std::min(kInterval - bytes.size(), loop.size() - at);
      bytes.append(loop, at, step);
      at = (at + step) % loop.size();
    }
    std::string title;
    if (second % 8 == 0) title = "StreamTitle='Second " + std::to_string(second) + "';";
    const size_t blocks = (title.size() + 15) / 16;
    title.resize(blocks * 16);
    server.send(bytes + static_cast<char>(blocks) + title);
  }
}

const bool kOneArena = mallopt(M_ARENA_MAX, 1) != 0;

TEST(Endurance, ALongTimeOfListeningTakesNoMoreMemoryThanAShortOne) {
  const double hours = wish("KESTREL_HOURS", 0.1);
  auto frames = std::make_shared<std::atomic<uint64_t>>(0);
  std::atomic<int> titles{0};
  Session session;
  engine::instance().useOutput(std::make_unique<Bottomless>(frames));
  ScriptedServer server;
  std::thread sending([&] {
    server.accept();
    sendHours(server, hours);
  });
  const HSTREAM stream = BASS_StreamCreateURL(server.url().c_str(), 0, 0, nullptr, 0);
  ASSERT_NE(0u, stream);
  const auto count = [](HSYNC, BASS_DWORD channel, uintptr_t, uintptr_t user) {
    ++*reinterpret_cast<std::atomic<int>*>(user);
    BASS_ChannelGetTags(channel, BASS_TAG_META);
  };
  BASS_ChannelSetSync(stream, BASS_SYNC_META, 0, count, reinterpret_cast<uintptr_t>(&titles));
  EXPECT_TRUE(BASS_ChannelPlay(stream, 0));
  long before = 0;
  for (uint64_t all = static_cast<uint64_t>(hours * 3600 * 48000 * 0.98); *frames < all;) {
    std::this_thread::sleep_for(20ms);
    if (before == 0 && *frames > all / 4) before = privateMemory();
  }
  const long after = privateMemory();
  sending.join();
  BASS_StreamFree(stream);
  std::printf("%.1f h, %d titles: %ld KiB, then %ld KiB\n", hours, titles.load(), before, after);
  EXPECT_GE(titles, static_cast<int>(hours * 3600 / 8 * 0.95));
  if (kMemoryIsOurs) {
    EXPECT_LE(after - before, 512);
  }
}

TEST(Endurance, FastChangesOfTheStationDoNotPileUp) {
  DemoRadio radio;
  Session session;
  const std::string url = radio.stream(radio.station("mp3", 44100));
  const size_t before = entriesOf("/proc/self/task");
  size_t most = 0;
  for (int change = 0; change < 10; ++change) {
    Listener listener;
    const HSTREAM stream = listener.play(url);
    ASSERT_NE(0u, stream);
    most = std::max(most, entriesOf("/proc/self/task"));
    session.listen(0.01);
    EXPECT_TRUE(BASS_StreamFree(stream));
  }
  // The present one's three, and the last one's fading sound.
  EXPECT_LE(most, before + 4);
}

TEST(Endurance, ChangesOfTheStationLeaveNothingBehind) {
  DemoRadio radio;
  Session session;
  engine::instance().useOutput(
      std::make_unique<Bottomless>(std::make_shared<std::atomic<uint64_t>>(0)));
  const int changes = static_cast<int>(wish("KESTREL_CHANGES", 200));
  const std::string good = radio.stream(radio.station("mp3", 44100));
  const std::string bad = radio.stream(radio.station("mp3", 44100), "hang-body-3000");
  size_t threads = 0;
  size_t files = 0;
  long memory = 0;
  const auto count = [&] {
    EXPECT_TRUE(BASS_Free());  // waits for what fades
    EXPECT_TRUE(BASS_Init(-1, 44100, 0, nullptr, nullptr));
    threads = entriesOf("/proc/self/task");
    files = entriesOf("/proc/self/fd");
    memory = privateMemory();
  };
  for (int change = 0; change < changes; ++change) {
    Listener listener;
    const HSTREAM stream = change % 4 == 3 ? listener.create(bad) : listener.play(good);
    ASSERT_NE(0u, stream);
    if (change % 2 == 0) {
      EXPECT_TRUE(BASS_ChannelStop(stream));
    }
    EXPECT_TRUE(BASS_StreamFree(stream));
    if (change == changes / 4) count();
  }
  const size_t threads_before = threads;
  const size_t files_before = files;
  const long memory_before = memory;
  count();
  std::printf("%d changes: %zu, %zu threads, %zu, %zu files, %ld, %ld KiB\n", changes,
              threads_before, threads, files_before, files, memory_before, memory);
  EXPECT_EQ(threads_before, threads);
  EXPECT_EQ(files_before, files);
  if (kMemoryIsOurs && kOneArena) {
    // A stream that stayed would be its buffer and more, a listener of it some hundred
    // bytes.
    EXPECT_LE(memory - memory_before, 512 + changes / 16);
  }
}

}  // namespace
}  // namespace engine_test
