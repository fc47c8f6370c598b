// Plays one address as the player does and tells what it saw:
//   engine_probe FOLDER URL SECONDS [OPTION VALUE]...
//     --rounds N           so often, with a pause in between
//     --record FILE        all bytes that the stream tells
//     --until BYTES        does not play on when it has told so many
//     --stop-opening MS    stops the opening after that time
// A line each: what, then figures or text. Times in milliseconds since the open. On
// Windows it loads the library in FOLDER, elsewhere it is linked with the engine.
#if defined(_WIN32)
#include <windows.h>
// After windows.h, which they build on.
#include <psapi.h>
#else
#include <malloc.h>

#include "engine/engine.h"
#include "tests/player/linked_engine.h"
#endif

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <thread>

#include "player/audio_library.h"

namespace {

using Clock = std::chrono::steady_clock;
using player::AudioLibrary;
using std::chrono::milliseconds;

double since(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

struct Recording {
  FILE* file = nullptr;
  std::atomic<size_t> bytes{0};
};

void BASS_CALL download(const void* buffer, BASS_DWORD length, uintptr_t user) {
  auto& recording = *reinterpret_cast<Recording*>(user);
  if (length != 0) {
    if (recording.file != nullptr) {
      std::fwrite(buffer, 1, length, recording.file);
      std::fflush(recording.file);
    }
    recording.bytes += length;
  } else if (buffer != nullptr) {
    std::printf("status %s\n", static_cast<const char*>(buffer));
    std::fflush(stdout);
  } else {
    std::puts("end");
  }
}

void BASS_CALL title(HSYNC, BASS_DWORD, uintptr_t data, uintptr_t) {
  std::printf("title %s\n", reinterpret_cast<const char*>(data));
}

void printTags(const AudioLibrary& bass, HSTREAM stream) {
  const char* text = bass.ChannelGetTags(stream, BASS_TAG_ICY);
  for (; text != nullptr && *text != '\0'; text += std::string(text).size() + 1) {
    std::printf("header %s\n", text);
  }
  BASS_CHANNELINFO info = {};
  if (bass.ChannelGetInfo(stream, &info)) std::printf("type %x rate %u\n", info.ctype, info.freq);
}

template <class Condition>
bool waitFor(milliseconds patience, Condition&& condition) {
  for (const auto start = Clock::now(); !condition();) {
    if (Clock::now() - start >= patience) return false;
    std::this_thread::sleep_for(milliseconds(20));
  }
  return true;
}

bool waitForBuffer(const AudioLibrary& bass, HSTREAM stream, milliseconds patience) {
  BASS_DWORD total = 0;
  return waitFor(patience,
                 [&] {
                   total = bass.StreamGetFilePosition(stream, BASS_FILEPOS_END);
                   const BASS_DWORD filled =
                       bass.StreamGetFilePosition(stream, BASS_FILEPOS_DOWNLOAD) -
                       bass.StreamGetFilePosition(stream, BASS_FILEPOS_DECODE);
                   return total == BASS_FILEPOS_ERROR || filled * 100ull / total > 75;
                 }) &&
         total != BASS_FILEPOS_ERROR;
}

#if defined(_WIN32)

void printHoldings() {
  // A new handle takes the lowest place that is free. Wine does not count them.
  const HANDLE next = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  const auto handles = reinterpret_cast<uintptr_t>(next) / 4;
  CloseHandle(next);
  PROCESS_MEMORY_COUNTERS memory = {};
  GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
  std::printf("handles %zu\nmemory %zu\n", static_cast<size_t>(handles),
              static_cast<size_t>(memory.PagefileUsage / 1024));
}

#else

size_t entriesOf(const char* folder) {
  const std::filesystem::directory_iterator entries(folder);
  return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

void printHoldings() {
  std::printf("handles %zu\nthreads %zu\nmemory %zu\n", entriesOf("/proc/self/fd"),
              entriesOf("/proc/self/task"), mallinfo2().uordblks / 1024);
}

#endif

/// What to play, and how long.
struct Task {
  std::string url;
  milliseconds time;
  std::map<std::string, std::string> options;

  const char* option(const char* name, const char* otherwise) const {
    const auto found = options.find(name);
    return found == options.end() ? otherwise : found->second.c_str();
  }
};

HSTREAM open(const AudioLibrary& bass, const Task& task, Recording& recording) {
  const auto start = Clock::now();
  std::puts("opening");
  std::fflush(stdout);
  std::atomic<bool> opened{false};
  double stopped = 0;  // since the start
  std::thread stopping;
  if (const int after = std::atoi(task.option("--stop-opening", "0")); after != 0) {
    stopping = std::thread([&, after] {
      if (waitFor(milliseconds(after), [&] { return opened.load(); })) return;
      stopped = since(start);
      bass.ChannelStop(0);
    });
  }
  const HSTREAM stream = bass.StreamCreateURL(task.url.c_str(), 0, BASS_STREAM_STATUS, download,
                                              reinterpret_cast<uintptr_t>(&recording));
  const int error = bass.ErrorGetCode();
  const double took = since(start);
  opened = true;
  if (stopping.joinable()) stopping.join();
  std::printf("opened %.1f\n", took);
  if (stopped != 0) std::printf("stopped %.1f\n", took - stopped);
  if (stream == 0) std::printf("error %d\n", error);
  return stream;
}

void playOnce(const AudioLibrary& bass, const Task& task, Recording& recording) {
  const auto start = Clock::now();
  const HSTREAM stream = open(bass, task, recording);
  if (stream != 0 && waitForBuffer(bass, stream, task.time + milliseconds(1000))) {
    bass.ChannelSetSync(stream, BASS_SYNC_META, 0, title, 0);
    bass.ChannelSetAttributes(stream, -1, 10000, -101);
    bass.ChannelPlay(stream, 0);
    std::printf("playing %.1f\n", since(start));
    printTags(bass, stream);
    std::fflush(stdout);
    const auto enough = static_cast<size_t>(std::atoll(task.option("--until", "-1")));
    waitFor(task.time, [&] { return recording.bytes >= enough; });
  }
  const auto stopping = Clock::now();
  bass.ChannelStop(stream);
  bass.StreamFree(stream);
  std::printf("freed %.1f\n", since(stopping));
  printHoldings();
  std::fflush(stdout);
}

#if defined(_WIN32)

constexpr const char* kPlugin = "bass_aac.dll";

#else

constexpr const char* kPlugin = AAC_PLUGIN;

/// Silence at the sound's pace: the system's sound library is no part of what the
/// sanitizers are to see.
class NoDevice final : public engine::OutputFactory {
 public:
  std::unique_ptr<engine::Output> open(const engine::Interrupt&) override { return nullptr; }
};

#endif

}  // namespace

int main(int argc, char** argv) {
  if (argc < 4) return 2;
  Task task{argv[2], milliseconds(static_cast<int>(std::atof(argv[3]) * 1000)), {}};
  for (int i = 4; i + 1 < argc; i += 2) task.options[argv[i]] = argv[i + 1];
  AudioLibrary bass;
#if defined(_WIN32)
  if (!player::loadAudioLibrary(argv[1] + std::string("\\bass.dll"), bass)) return 2;
#else
  bass = linkedEngine();
  engine::instance().useOutput(std::make_unique<NoDevice>());
#endif
  std::printf("version %x\n", bass.GetVersion() >> 16);
  if (!bass.Init(-1, 44100, 0, nullptr, nullptr)) return 2;
  bass.SetConfig(BASS_CONFIG_MAXVOL, 10000);
  bass.SetConfig(BASS_CONFIG_NET_PREBUF, 0);
  std::printf("plugin %d\n", bass.PluginLoad(kPlugin, 0) != 0);
  Recording recording;
  if (const char* file = task.option("--record", nullptr)) recording.file = std::fopen(file, "wb");
  for (int round = std::atoi(task.option("--rounds", "1")); round > 0; --round) {
    playOnce(bass, task, recording);
    if (round > 1) std::this_thread::sleep_for(milliseconds(400));
  }
  bass.PluginFree(0);
  bass.Free();
  if (recording.file != nullptr) std::fclose(recording.file);
#if defined(_WIN32)
  return FreeLibrary(GetModuleHandleA("bass.dll")) ? 0 : 1;
#else
  return 0;
#endif
}
