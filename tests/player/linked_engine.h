#pragma once

#include "player/audio_library.h"

/// The engine as a table of functions, where it is linked and not loaded.
inline player::AudioLibrary linkedEngine() {
  return {BASS_GetVersion,     BASS_Init,
          BASS_Free,           BASS_SetConfig,
          BASS_ErrorGetCode,   BASS_PluginLoad,
          BASS_PluginFree,     BASS_StreamCreateURL,
          BASS_StreamFree,     BASS_StreamGetFilePosition,
          BASS_ChannelGetTags, BASS_ChannelSetSync,
          BASS_ChannelGetInfo, BASS_ChannelSetAttributes,
          BASS_ChannelPlay,    BASS_ChannelStop};
}
