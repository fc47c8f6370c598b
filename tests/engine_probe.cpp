// Plays one address as the player does and tells what it saw:
//   engine_probe FOLDER URL SECONDS [ROUNDS [PAUSE]] [OPTION VALUE]...
//     --record FILE        all bytes that the stream tells
//     --until BYTES        does not play on when it has told so many
//     --stop-opening MS    stops the opening after that time
//   engine_probe trust FILE      lets the present user trust that certificate (DER)
// A line each: what, then figures or text. Times in milliseconds since the open. On
// Windows it loads the library in FOLDER, elsewhere it is linked with the engine.
#if defined(_WIN32)
#include <windows.h>
// After windows.h, which they build on.
#include <psapi.h>
#include <tlhelp32.h>
#include <wincrypt.h>
#else
#include <malloc.h>
#endif

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "engine/bass.h"
#if !defined(_WIN32)
#include "engine/engine.h"
#endif

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

#if defined(_WIN32)
template <class Function>
Function* symbol(HMODULE library, const char* name) {
  const FARPROC found = GetProcAddress(library, name);
  if (found == nullptr) {
    std::printf("missing %s\n", name);
    std::exit(2);
  }
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(found));
}

#endif

struct Library {
#if defined(_WIN32)
#define ENGINE_SYMBOL(name) name(symbol<decltype(BASS_##name)>(from, "BASS_" #name))
  explicit Library(HMODULE from)
#else
#define ENGINE_SYMBOL(name) name(&BASS_##name)
  Library()
#endif
      : ENGINE_SYMBOL(GetVersion),
        ENGINE_SYMBOL(Init),
        ENGINE_SYMBOL(Free),
        ENGINE_SYMBOL(SetConfig),
        ENGINE_SYMBOL(ErrorGetCode),
        ENGINE_SYMBOL(PluginLoad),
        ENGINE_SYMBOL(PluginFree),
        ENGINE_SYMBOL(StreamCreateURL),
        ENGINE_SYMBOL(StreamFree),
        ENGINE_SYMBOL(StreamGetFilePosition),
        ENGINE_SYMBOL(ChannelGetTags),
        ENGINE_SYMBOL(ChannelSetSync),
        ENGINE_SYMBOL(ChannelGetInfo),
        ENGINE_SYMBOL(ChannelSetAttributes),
        ENGINE_SYMBOL(ChannelPlay),
        ENGINE_SYMBOL(ChannelStop) {
  }
#undef ENGINE_SYMBOL
  decltype(BASS_GetVersion)* GetVersion;
  decltype(BASS_Init)* Init;
  decltype(BASS_Free)* Free;
  decltype(BASS_SetConfig)* SetConfig;
  decltype(BASS_ErrorGetCode)* ErrorGetCode;
  decltype(BASS_PluginLoad)* PluginLoad;
  decltype(BASS_PluginFree)* PluginFree;
  decltype(BASS_StreamCreateURL)* StreamCreateURL;
  decltype(BASS_StreamFree)* StreamFree;
  decltype(BASS_StreamGetFilePosition)* StreamGetFilePosition;
  decltype(BASS_ChannelGetTags)* ChannelGetTags;
  decltype(BASS_ChannelSetSync)* ChannelSetSync;
  decltype(BASS_ChannelGetInfo)* ChannelGetInfo;
  decltype(BASS_ChannelSetAttributes)* ChannelSetAttributes;
  decltype(BASS_ChannelPlay)* ChannelPlay;
  decltype(BASS_ChannelStop)* ChannelStop;
};

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

void printTags(const Library& bass, HSTREAM stream) {
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

bool waitForBuffer(const Library& bass, HSTREAM stream, milliseconds patience) {
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
  size_t threads = 0;
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof entry;
  for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
    if (entry.th32OwnerProcessID == GetCurrentProcessId()) ++threads;
  }
  CloseHandle(snapshot);
  PROCESS_MEMORY_COUNTERS memory = {};
  GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
  std::printf("handles %zu\nthreads %zu\nmemory %zu\n", static_cast<size_t>(handles), threads,
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
  milliseconds time{};
  std::map<std::string, std::string> options;

  const char* option(const char* name, const char* otherwise) const {
    const auto found = options.find(name);
    return found == options.end() ? otherwise : found->second.c_str();
  }
};

HSTREAM open(const Library& bass, const Task& task, Recording& recording) {
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

void playOnce(const Library& bass, const Task& task, Recording& recording) {
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

int trust(const char* file) {
  std::vector<unsigned char> bytes(8192);
  FILE* in = std::fopen(file, "rb");
  if (in == nullptr) return 2;
  bytes.resize(std::fread(bytes.data(), 1, bytes.size(), in));
  std::fclose(in);
  const HCERTSTORE store = CertOpenSystemStoreW(0, L"ROOT");
  const BOOL added = CertAddEncodedCertificateToStore(store, X509_ASN_ENCODING, bytes.data(),
                                                      static_cast<DWORD>(bytes.size()),
                                                      CERT_STORE_ADD_REPLACE_EXISTING, nullptr);
  CertCloseStore(store, 0);
  return added ? 0 : 1;
}

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
#if defined(_WIN32)
  if (argc == 3 && std::string(argv[1]) == "trust") return trust(argv[2]);
#endif
  std::vector<std::string> words;
  Task task;
  for (int i = 1; i < argc; ++i) {
    const std::string word = argv[i];
    if (word.starts_with("--") && i + 1 < argc) {
      task.options[word] = argv[++i];
    } else {
      words.push_back(word);
    }
  }
  if (words.size() < 3) return 2;
  task.url = words[1];
  task.time = milliseconds(static_cast<int>(std::atof(words[2].c_str()) * 1000));
#if defined(_WIN32)
  const HMODULE library = LoadLibraryA((words[0] + "\\bass.dll").c_str());
  if (library == nullptr) return std::printf("not loaded %lu\n", GetLastError()), 2;
  const Library bass(library);
#else
  const Library bass;
  engine::instance().useOutput(std::make_unique<NoDevice>());
#endif
  std::printf("version %x\n", bass.GetVersion() >> 16);
  if (!bass.Init(-1, 44100, 0, nullptr, nullptr)) return 2;
  bass.SetConfig(BASS_CONFIG_MAXVOL, 10000);
  bass.SetConfig(BASS_CONFIG_NET_PREBUF, 0);
  std::printf("plugin %d\n", bass.PluginLoad(kPlugin, 0) != 0);
  Recording recording;
  if (const char* file = task.option("--record", nullptr)) recording.file = std::fopen(file, "wb");
  const milliseconds pause(words.size() > 4 ? std::stoi(words[4]) : 1500);
  for (int round = words.size() > 3 ? std::stoi(words[3]) : 1; round > 0; --round) {
    playOnce(bass, task, recording);
    if (round > 1) std::this_thread::sleep_for(pause);
  }
  bass.PluginFree(0);
  bass.Free();
  if (recording.file != nullptr) std::fclose(recording.file);
#if defined(_WIN32)
  return FreeLibrary(library) ? 0 : 1;
#else
  return 0;
#endif
}
