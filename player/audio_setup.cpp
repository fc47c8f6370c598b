#include "player/audio_setup.h"

#include "base/files.h"

namespace player {
namespace {

constexpr BASS_DWORD kVersion = 0x0203;
constexpr int kDefaultDevice = -1;
constexpr BASS_DWORD kFrequency = 44100;
constexpr BASS_DWORD kMaxVolume = 10000;  // volumes are hundredths of a per cent
constexpr char kPlugin[] = "bass_aac.dll";

constexpr auto kCritical = app::Desktop::Icon::critical;

bool loadLibrary(const AudioSetup& setup, const std::string& folder) {
  const std::string path = folder + "bass.dll";
  if (!base::fileExists(path)) {
    setup.desktop.messageBox("BASS.DLL does not exists", "BASS.DLL", kCritical);
    return false;
  }
  // A file that does not load, or lacks a function, is another library as much as
  // one with another version number.
  AudioLibrary found;
  if (!setup.load(path, found) || found.GetVersion() >> 16 != kVersion) {
    setup.desktop.messageBox("BASS version 2.3 was not loaded", "Incorrect BASS.DLL", kCritical);
    return false;
  }
  setup.library = found;
  return true;
}

}  // namespace

bool initaudio(const AudioSetup& setup) {
  std::string folder = setup.program_folder;
  if (folder.empty() || folder.back() != '\\') folder += '\\';
  if (!loadLibrary(setup, folder)) return false;

  const AudioLibrary& library = setup.library;
  if (library.Init(kDefaultDevice, kFrequency, 0, setup.main_window, nullptr) == 0) {
    ShowBassError(library, setup.view, "Can't initialize device");
    return false;
  }
  library.SetConfig(BASS_CONFIG_MAXVOL, kMaxVolume);
  // The player waits for a filled buffer itself, to show how far it is.
  library.SetConfig(BASS_CONFIG_NET_PREBUF, 0);
  if (base::fileExists(folder + kPlugin)) {
    library.PluginLoad(kPlugin, 0);
  } else {
    setup.desktop.messageBox("bass_aac.dll not found. AAC support disabled", kPlugin, kCritical);
  }
  setup.playlisteinlesen();
  setup.view.lblName("stop");
  return true;
}

void ShowBassError(const AudioLibrary& library, PlayerView& view, std::string_view text) {
  const int code = library.ErrorGetCode();
  std::string message(text);
  message += "\r\n\r\nError Code : " + std::to_string(code) + "\r\n";
  if (code == BASS_ERROR_FILEFORM)
    message += "Unsupported Fileformat\r\nStream not Online or Unsupported Fileformat";
  view.showError(std::move(message));
}

}  // namespace player
