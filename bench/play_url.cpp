// play_url ADDRESS: plays until it is ended, as the player does: through the library,
// from three quarters of its buffer on. The engine's own part beside other players.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <thread>

#include "engine/abi/bass.h"

int main(int count, char** arguments) {
  if (count != 2) return 2;
  if (BASS_Init(-1, 44100, 0, nullptr, nullptr) == 0) return 1;
  BASS_SetConfig(BASS_CONFIG_MAXVOL, 10000);
  BASS_SetConfig(BASS_CONFIG_NET_PREBUF, 0);
  BASS_PluginLoad(AAC_PLUGIN, 0);
  const HSTREAM stream = BASS_StreamCreateURL(arguments[1], 0, 0, nullptr, 0);
  if (stream == 0) {
    std::fprintf(stderr, "error %d\n", BASS_ErrorGetCode());
    return 1;
  }
  constexpr unsigned long long kEnough = 75;  // percent
  for (;;) {
    const BASS_DWORD end = BASS_StreamGetFilePosition(stream, BASS_FILEPOS_END);
    const BASS_DWORD have = BASS_StreamGetFilePosition(stream, BASS_FILEPOS_DOWNLOAD) -
                            BASS_StreamGetFilePosition(stream, BASS_FILEPOS_DECODE);
    if (end == ~BASS_DWORD{0} || have * 100ULL >= end * kEnough) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  BASS_ChannelPlay(stream, 0);
  pause();
}
