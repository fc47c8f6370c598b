#pragma once

#include <string>

#include "engine/abi/bass.h"

namespace player {

/// The audio library's functions as the player calls them, each with the meaning
/// that engine/bass.h gives it. All empty until a library has been loaded; the
/// library then stays loaded for the rest of the process, since its threads may
/// still be ending while the program leaves.
struct AudioLibrary {
  decltype(&BASS_GetVersion) GetVersion = nullptr;
  decltype(&BASS_Init) Init = nullptr;
  decltype(&BASS_Free) Free = nullptr;
  decltype(&BASS_SetConfig) SetConfig = nullptr;
  decltype(&BASS_ErrorGetCode) ErrorGetCode = nullptr;
  decltype(&BASS_PluginLoad) PluginLoad = nullptr;
  decltype(&BASS_PluginFree) PluginFree = nullptr;
  decltype(&BASS_StreamCreateURL) StreamCreateURL = nullptr;
  decltype(&BASS_StreamFree) StreamFree = nullptr;
  decltype(&BASS_StreamGetFilePosition) StreamGetFilePosition = nullptr;
  decltype(&BASS_ChannelGetTags) ChannelGetTags = nullptr;
  decltype(&BASS_ChannelSetSync) ChannelSetSync = nullptr;
  decltype(&BASS_ChannelGetInfo) ChannelGetInfo = nullptr;
  decltype(&BASS_ChannelSetAttributes) ChannelSetAttributes = nullptr;
  decltype(&BASS_ChannelPlay) ChannelPlay = nullptr;
  decltype(&BASS_ChannelStop) ChannelStop = nullptr;

  [[nodiscard]] bool isLoaded() const { return GetVersion != nullptr; }
};

/// Fills the table from the library file at `path` (8-bit, with its folder).
/// False, and an untouched table, if the file does not load or lacks one of the
/// functions.
[[nodiscard]] bool loadAudioLibrary(const std::string& path, AudioLibrary& library);

}  // namespace player
