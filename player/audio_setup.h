#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "app/desktop.h"
#include "player/audio_library.h"
#include "player/player_view.h"

namespace player {

/// What initaudio works with. User-interface thread.
struct AudioSetup {
  AudioLibrary& library;  ///< filled on the way
  app::Desktop& desktop;  ///< says what is missing
  PlayerView& view;
  std::string program_folder;  ///< where the library and its plug-in are looked for
  void* main_window = nullptr;
  /// loadAudioLibrary, or the linked engine in a native test.
  std::function<bool(const std::string& path, AudioLibrary& library)> load;
  /// Reads the last saved playlist, so that the player menu shows it from the start.
  std::function<void()> playlisteinlesen;
};

/// Finds, checks and starts the audio library, with a message for each thing that
/// is wrong. False: the program must end (the user has been told why).
[[nodiscard]] bool initaudio(const AudioSetup& setup);

/// Shows `text` with the reason for the calling thread's last failed library
/// call. From any thread.
void ShowBassError(const AudioLibrary& library, PlayerView& view, std::string_view text);

}  // namespace player
