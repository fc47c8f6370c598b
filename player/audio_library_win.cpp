#include "player/audio_library.h"

#include <windows.h>

#include "base/utf.h"

namespace player {
namespace {

/// Looks functions up and remembers whether one was missing.
class Exports {
 public:
  explicit Exports(HMODULE module) : module_(module) {}

  template <class Function>
  void find(const char* name, Function& function) {
    const FARPROC address = GetProcAddress(module_, name);
    complete_ = complete_ && address != nullptr;
    // By way of a function type that stands for any, which the compiler accepts.
    function = reinterpret_cast<Function>(reinterpret_cast<void (*)()>(address));
  }

  [[nodiscard]] bool complete() const { return complete_; }

 private:
  HMODULE module_;
  bool complete_ = true;
};

}  // namespace

bool loadAudioLibrary(const std::string& path, AudioLibrary& library) {
  // With the altered search path the library's own needs are looked for beside it.
  const HMODULE module =
      LoadLibraryExW(base::toWide(path).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (module == nullptr) return false;
  Exports exports(module);
  AudioLibrary found;
  exports.find("BASS_GetVersion", found.GetVersion);
  exports.find("BASS_Init", found.Init);
  exports.find("BASS_Free", found.Free);
  exports.find("BASS_SetConfig", found.SetConfig);
  exports.find("BASS_ErrorGetCode", found.ErrorGetCode);
  exports.find("BASS_PluginLoad", found.PluginLoad);
  exports.find("BASS_PluginFree", found.PluginFree);
  exports.find("BASS_StreamCreateURL", found.StreamCreateURL);
  exports.find("BASS_StreamFree", found.StreamFree);
  exports.find("BASS_StreamGetFilePosition", found.StreamGetFilePosition);
  exports.find("BASS_ChannelGetTags", found.ChannelGetTags);
  exports.find("BASS_ChannelSetSync", found.ChannelSetSync);
  exports.find("BASS_ChannelGetInfo", found.ChannelGetInfo);
  exports.find("BASS_ChannelSetAttributes", found.ChannelSetAttributes);
  exports.find("BASS_ChannelPlay", found.ChannelPlay);
  exports.find("BASS_ChannelStop", found.ChannelStop);
  if (!exports.complete()) {
    FreeLibrary(module);
    return false;
  }
  library = found;
  return true;
}

}  // namespace player
