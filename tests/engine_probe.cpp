// Loads the engine as the player does, plays one address and tells what it saw:
//   engine_probe FOLDER URL SECONDS [ROUNDS [PAUSE]]
//   engine_probe trust FILE      lets the present user trust that certificate (DER)
// A line each: what, then figures or text. Times in milliseconds since the open.
#include <windows.h>

#include <wincrypt.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "engine/bass.h"

namespace {

template <class Function>
Function* symbol(HMODULE library, const char* name) {
  const FARPROC found = GetProcAddress(library, name);
  if (found == nullptr) {
    std::printf("missing %s\n", name);
    std::exit(2);
  }
  return reinterpret_cast<Function*>(reinterpret_cast<void*>(found));
}

struct Library {
  explicit Library(HMODULE from)
#define ENGINE_SYMBOL(name) name(symbol<decltype(BASS_##name)>(from, "BASS_" #name))
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

using Clock = std::chrono::steady_clock;

double since(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void BASS_CALL download(const void* buffer, BASS_DWORD length, uintptr_t) {
  if (length == 0 && buffer != nullptr)
    std::printf("status %s\n", static_cast<const char*>(buffer));
  if (length == 0 && buffer == nullptr) std::puts("end");
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

bool waitForBuffer(const Library& bass, HSTREAM stream, DWORD patience) {
  for (const DWORD begin = GetTickCount(); GetTickCount() - begin < patience;) {
    const BASS_DWORD total = bass.StreamGetFilePosition(stream, BASS_FILEPOS_END);
    if (total == BASS_FILEPOS_ERROR) return false;
    const BASS_DWORD filled = bass.StreamGetFilePosition(stream, BASS_FILEPOS_DOWNLOAD) -
                              bass.StreamGetFilePosition(stream, BASS_FILEPOS_DECODE);
    if (filled * 100ull / total > 75) return true;
    Sleep(50);
  }
  return false;
}

void playOnce(const Library& bass, const char* url, DWORD milliseconds) {
  const auto start = Clock::now();
  std::puts("opening");
  std::fflush(stdout);
  const HSTREAM stream = bass.StreamCreateURL(url, 0, BASS_STREAM_STATUS, download, 0);
  std::printf("opened %.1f\n", since(start));
  if (stream == 0) {
    std::printf("error %d\n", bass.ErrorGetCode());
  } else if (waitForBuffer(bass, stream, milliseconds + 1000)) {
    bass.ChannelSetSync(stream, BASS_SYNC_META, 0, title, 0);
    bass.ChannelSetAttributes(stream, -1, 10000, -101);
    bass.ChannelPlay(stream, 0);
    std::printf("playing %.1f\n", since(start));
    printTags(bass, stream);
    std::fflush(stdout);
    Sleep(milliseconds);
  }
  const auto stopping = Clock::now();
  bass.ChannelStop(stream);
  bass.StreamFree(stream);
  // A new handle takes the lowest place that is free. Wine does not count them.
  const HANDLE next = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  std::printf("freed %.1f\nhandles %u\n", since(stopping),
              static_cast<unsigned>(reinterpret_cast<uintptr_t>(next) / 4));
  CloseHandle(next);
  std::fflush(stdout);
}

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

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::string(argv[1]) == "trust") return trust(argv[2]);
  if (argc < 4) return 2;
  const std::string folder = argv[1];
  const HMODULE library = LoadLibraryA((folder + "\\bass.dll").c_str());
  if (library == nullptr) return std::printf("not loaded %lu\n", GetLastError()), 2;
  const Library bass(library);
  std::printf("version %x\n", bass.GetVersion() >> 16);
  if (!bass.Init(-1, 44100, 0, nullptr, nullptr)) return 2;
  bass.SetConfig(BASS_CONFIG_MAXVOL, 10000);
  bass.SetConfig(BASS_CONFIG_NET_PREBUF, 0);
  std::printf("plugin %d\n", bass.PluginLoad("bass_aac.dll", 0) != 0);
  for (int round = argc > 4 ? std::atoi(argv[4]) : 1; round > 0; --round) {
    playOnce(bass, argv[2], static_cast<DWORD>(std::atof(argv[3]) * 1000));
    if (round > 1) Sleep(argc > 5 ? static_cast<DWORD>(std::atoi(argv[5])) : 1500);
  }
  bass.PluginFree(0);
  bass.Free();
  return FreeLibrary(library) ? 0 : 1;
}
