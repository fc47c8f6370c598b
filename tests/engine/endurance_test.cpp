// A day of listening and a thousand changes of the station leave memory, threads and
// handles as they were. Small numbers unless the environment asks for the large ones:
// KESTREL_HOURS of sound, KESTREL_CHANGES of the station.
#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/engine/harness.h"

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
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<size_t>(std::distance(begin(entries), end(entries)));
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
    server.send(bytes + titleBlock(second % 8 == 0 ? "Second " + std::to_string(second) : ""));
  }
}

const bool kOneArena = mallopt(M_ARENA_MAX, 1) != 0;

TEST(Endurance, ALongTimeOfListeningTakesNoMoreMemoryThanAShortOne) {
  const double hours = wish("KESTREL_HOURS", 0.1);
  std::atomic<int> titles{0};
  Session session;
  session.reel()->swallows = true;
  const std::atomic<uint64_t>& frames = session.reel()->frames;
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
  for (uint64_t all = static_cast<uint64_t>(hours * 3600 * 48000 * 0.98); frames < all;) {
    std::this_thread::sleep_for(20ms);
    if (before == 0 && frames > all / 4) before = privateMemory();
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
  Session session;
  const std::string url = radio().stream(radio().station("mp3", 44100));
  const size_t before = entriesOf("/proc/self/task");
  for (int change = 0; change < 10; ++change) {
    Listener listener;
    const HSTREAM stream = listener.play(url);
    ASSERT_NE(0u, stream);
    // The present one's three, and the last one's fading sound.
    EXPECT_LE(entriesOf("/proc/self/task"), before + 4);
    session.listen(0.01);
    EXPECT_TRUE(BASS_StreamFree(stream));
  }
}

struct Holdings {
  size_t threads, files;
  long memory;  ///< KiB
};

TEST(Endurance, ChangesOfTheStationLeaveNothingBehind) {
  Session session;
  session.reel()->swallows = true;
  const int changes = static_cast<int>(wish("KESTREL_CHANGES", 200));
  const std::string good = radio().stream(radio().station("mp3", 44100));
  const std::string bad = radio().stream(radio().station("mp3", 44100), "hang-body-3000");
  const auto count = [] {
    EXPECT_TRUE(BASS_Free());  // waits for what fades
    EXPECT_TRUE(BASS_Init(-1, 44100, 0, nullptr, nullptr));
    return Holdings{entriesOf("/proc/self/task"), entriesOf("/proc/self/fd"), privateMemory()};
  };
  Holdings before = {};
  for (int change = 0; change < changes; ++change) {
    Listener listener;
    const HSTREAM stream = change % 4 == 3 ? listener.create(bad) : listener.play(good);
    ASSERT_NE(0u, stream);
    if (change % 2 == 0) {
      EXPECT_TRUE(BASS_ChannelStop(stream));
    }
    EXPECT_TRUE(BASS_StreamFree(stream));
    if (change == changes / 4) before = count();
  }
  const Holdings after = count();
  std::printf("%d changes: %ld KiB, then %ld KiB\n", changes, before.memory, after.memory);
  EXPECT_EQ(before.threads, after.threads);
  EXPECT_EQ(before.files, after.files);
  if (kMemoryIsOurs && kOneArena) {
    // A stream that stayed would be its buffer and more, a listener of it some hundred
    // bytes.
    EXPECT_LE(after.memory - before.memory, 512 + changes / 16);
  }
}

}  // namespace
}  // namespace engine_test
