#include <windows.h>

#include <cstdlib>
#include <cstring>

#include "player/player_ids.h"
#include "player/player_window_win.h"
#include "player/volform_win.h"
#include "tests/wine_desktop.h"
#include "window/message_pump.h"

// The player window with sample texts, to be looked at:
//   player_window_demo SCENE [SECONDS]
// Scenes: playing, buffering, stopped, german, cyrillic, japanese, recording, mini,
// volume. KESTREL_DPI sets the density.

namespace {

struct Scene {
  const char* name;
  const char* lblName;
  const char* lbstation;
  const char* song;
  const char* bps;
  const char* format;
  bool playing;
};

constexpr Scene kScenes[] = {
    {"playing", "Radio Swiss Jazz", "Swiss Jazz", "Oscar Peterson Trio - Night Train",
     "bitrate: 128", "mp3", true},
    {"buffering", "buffering... 42%", "Groove Salad", "Opening", "ICY 200 OK", "", true},
    {"stopped", "stop", "", "", "", "", false},
    {"german", "Österreichischer Rundfunk – Kulturprogramm Wien",
     "Österreichischer Rundfunk – Kulturprogramm Wien",
     "Wiener Philharmoniker - Donaudampfschifffahrtsgesellschaftskapitänswalzer, op. 314",
     "bitrate: 320", "aac", true},
    {"cyrillic", "Радио Культура", "Радио Культура", "Чайковский - Щелкунчик, Вальс цветов",
     "bitrate: 192", "mp3", true},
    {"japanese", "東京FMクラシック", "東京FM", "坂本龍一 - 戦場のメリークリスマス", "bitrate: 64",
     "aac", true},
};

const Scene& sceneOf(const char* name) {
  for (const Scene& scene : kScenes)
    if (std::strcmp(scene.name, name) == 0) return scene;
  return kScenes[0];
}

}  // namespace

int main(int count, char** arguments) {
  const char* name = count > 1 ? arguments[1] : "playing";
  const int seconds = count > 2 ? std::atoi(arguments[2]) : 0;
  app::Captions captions;
  test::FakeDesktop desktop;
  tray::MenuTree menu;
  window::UiQueue queue;
  player::Volume volume;
  volume.set(7200);
  player::VolForm volform(volume, menu);
  player::PlayerWindow window({captions, desktop, menu, queue, volume});
  window.connect({[&] { window.showPlaying(true); }, [&] { window.showPlaying(false); }, [] {},
                  [&](bool wanted) { window.showRecording(wanted); }});
  const Scene& scene = sceneOf(name);
  window.lbstation(scene.lbstation);
  window.lblName(scene.lblName);
  window.lblSong(scene.song);
  window.lblBPS(scene.bps);
  window.lblFormat(scene.format);
  window.showPlaying(scene.playing);
  window.showRecording(std::strcmp(name, "recording") == 0);
  window.showPlayer();
  if (std::strcmp(name, "mini") == 0)
    PostMessageW(window.handle(), WM_COMMAND, player::kIdsubmini, 0);
  if (std::strcmp(name, "volume") == 0) volform.mnuplayervolume_Click();
  if (seconds > 0) SetTimer(nullptr, 0, static_cast<UINT>(seconds) * 1000, nullptr);
  MSG message{};
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    if (message.message == WM_TIMER && message.hwnd == nullptr) break;
    window::dispatch(message);
  }
  return 0;
}
