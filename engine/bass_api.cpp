#include <exception>
#include <new>

#include "engine/abi/bass.h"
#include "engine/engine.h"

// The exported functions: each translates to the engine's own terms, keeps its
// reason of failure for the calling thread, and lets no exception out.

using engine::instance;

namespace {

constexpr BASS_DWORD kVersion = 0x02030000;

thread_local int last_error = BASS_OK;

// Runs `work`, which gives a code; true for BASS_OK.
template <class Work>
BASS_BOOL run(const Work& work) noexcept {
  try {
    last_error = work();
  } catch (const std::bad_alloc&) {
    last_error = BASS_ERROR_MEM;
  } catch (...) {
    last_error = BASS_ERROR_UNKNOWN;
  }
  return last_error == BASS_OK ? 1 : 0;
}

// The same on a stream; BASS_ERROR_HANDLE without it.
template <class Work>
BASS_BOOL runOn(BASS_DWORD handle, const Work& work) noexcept {
  return run([&] {
    const auto stream = instance().find(handle);
    return stream ? work(*stream) : BASS_ERROR_HANDLE;
  });
}

int pluginError(engine::PluginLibrary::Failure failure) {
  using Failure = engine::PluginLibrary::Failure;
  switch (failure) {
    case Failure::none:
      return BASS_OK;
    case Failure::no_file:
      return BASS_ERROR_FILEOPEN;
    case Failure::no_plugin:
      return BASS_ERROR_FILEFORM;
    case Failure::other_version:
      break;
  }
  return BASS_ERROR_VERSION;
}

}  // namespace

extern "C" {

BASS_DWORD BASS_API BASS_GetVersion(void) {
  return kVersion;
}

BASS_BOOL BASS_API BASS_Init(int device, BASS_DWORD, BASS_DWORD, void*, const void*) {
  return run([&] { return instance().init(device); });
}

BASS_BOOL BASS_API BASS_Free(void) {
  return run([] { return instance().free(); });
}

BASS_DWORD BASS_API BASS_SetConfig(BASS_DWORD option, BASS_DWORD value) {
  BASS_DWORD previous = 0;
  return run([&]() -> int {
    return instance().setConfig(option, value, previous) ? BASS_OK : BASS_ERROR_ILLPARAM;
  })
             ? previous
             : 0xFFFFFFFFu;
}

int BASS_API BASS_ErrorGetCode(void) {
  return last_error;
}

HPLUGIN BASS_API BASS_PluginLoad(const char* file, BASS_DWORD) {
  HPLUGIN handle = 0;
  run([&] {
    if (file == nullptr) return static_cast<int>(BASS_ERROR_ILLPARAM);
    engine::PluginLibrary::Failure failure;
    handle = instance().codecs().load(file, failure);
    return pluginError(failure);
  });
  return handle;
}

BASS_BOOL BASS_API BASS_PluginFree(HPLUGIN handle) {
  return run(
      [&]() -> int { return instance().codecs().free(handle) ? BASS_OK : BASS_ERROR_HANDLE; });
}

HSTREAM BASS_API BASS_StreamCreateURL(const char* url, BASS_DWORD offset, BASS_DWORD flags,
                                      DOWNLOADPROC* proc, uintptr_t user) {
  HSTREAM handle = 0;
  run([&] {
    if (url == nullptr || offset != 0) return static_cast<int>(BASS_ERROR_ILLPARAM);
    return instance().createStream(url, {proc, user, (flags & BASS_STREAM_STATUS) != 0}, handle);
  });
  return handle;
}

BASS_BOOL BASS_API BASS_StreamFree(HSTREAM handle) {
  return run([&] { return instance().freeStream(handle); });
}

BASS_DWORD BASS_API BASS_StreamGetFilePosition(HSTREAM handle, BASS_DWORD mode) {
  BASS_DWORD bytes = 0;
  const auto work = [&](engine::Stream& stream) { return stream.position(mode, bytes); };
  return runOn(handle, work) ? bytes : BASS_FILEPOS_ERROR;
}

const char* BASS_API BASS_ChannelGetTags(BASS_DWORD handle, BASS_DWORD tags) {
  const char* text = nullptr;
  runOn(handle, [&](engine::Stream& stream) -> int {
    text = stream.tags(tags);
    return text != nullptr ? BASS_OK : BASS_ERROR_NOTAVAIL;
  });
  return text;
}

HSYNC BASS_API BASS_ChannelSetSync(BASS_DWORD handle, BASS_DWORD type, BASS_QWORD, SYNCPROC* proc,
                                   uintptr_t user) {
  HSYNC sync = 0;
  return run([&] { return instance().setSync(handle, type, proc, user, sync); }) ? sync : 0;
}

BASS_BOOL BASS_API BASS_ChannelGetInfo(BASS_DWORD handle, BASS_CHANNELINFO* info) {
  return runOn(handle, [&](engine::Stream& stream) -> int {
    if (info == nullptr) return BASS_ERROR_ILLPARAM;
    *info = stream.info();
    return BASS_OK;
  });
}

BASS_BOOL BASS_API BASS_ChannelSetAttributes(BASS_DWORD handle, int freq, int volume, int pan) {
  return run([&]() -> int {
    // A radio has no use for another speed or side; asking for one is told apart
    // from asking for nothing.
    if (freq != -1 || pan != -101) return BASS_ERROR_NOTAVAIL;
    if (volume != -1) return instance().setVolume(handle, volume);
    return instance().find(handle) ? BASS_OK : BASS_ERROR_HANDLE;
  });
}

BASS_BOOL BASS_API BASS_ChannelPlay(BASS_DWORD handle, BASS_BOOL) {
  return runOn(handle, [](engine::Stream& stream) { return stream.play(); });
}

BASS_BOOL BASS_API BASS_ChannelStop(BASS_DWORD handle) {
  return run([&] { return instance().stopStream(handle); });
}

}  // extern "C"
