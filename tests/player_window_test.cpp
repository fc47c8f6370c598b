// The player window and the volume popup, used by mouse, keyboard and messages.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "player/player_ids.h"
#include "player/player_window_win.h"
#include "player/volform_win.h"
#include "tests/wine_desktop.h"
#include "window/gdi.h"
#include "window/theme.h"
#include "window/utf.h"

namespace {

/// A hand is not as fast as a program, and the desktop counts on it.
constexpr DWORD kHandMs = 150;

/// The same on the user interface's own thread.
void click(POINT at) {
  test::moveMouse(at);
  test::pumpUntil([] { return false; }, std::chrono::milliseconds(kHandMs));
  test::clickMouse(at);
}

using Clicks = std::vector<std::string>;

POINT middleOf(HWND window) {
  RECT area{};
  GetWindowRect(window, &area);
  return {(area.left + area.right) / 2, (area.top + area.bottom) / 2};
}

class PlayerWindowTest : public testing::Test {
 protected:
  PlayerWindowTest() {
    window.connect({[this] { clicks.emplace_back("start"); },
                    [this] { clicks.emplace_back("stop"); },
                    [this] { clicks.emplace_back("toggle"); },
                    [this](bool wanted) {
                      clicks.emplace_back(wanted ? "record" : "do not record");
                      window.showRecording(wanted);
                    }});
  }

  void show() {
    window.showPlayer();
    ASSERT_TRUE(test::pumpUntil([&] { return GetForegroundWindow() == window.handle(); }));
    test::pumpUntil([] { return false; }, std::chrono::milliseconds(100));
  }
  [[nodiscard]] HWND control(int id) const { return GetDlgItem(window.handle(), id); }
  [[nodiscard]] std::string text(int id) const {
    wchar_t buffer[256] = {};
    SendMessageW(control(id), WM_GETTEXT, 256, reinterpret_cast<LPARAM>(buffer));
    return window::toNarrow(buffer);
  }
  [[nodiscard]] bool shows(int id) const { return IsWindowVisible(control(id)) != FALSE; }
  /// What the posted changes have done so far does not count until they ran.
  static void settle() {
    test::pumpUntil([] { return false; }, std::chrono::milliseconds(60));
  }
  void expectKey(WORD key, const std::function<bool()>& effect) {
    test::pressKey(key);
    EXPECT_TRUE(test::pumpUntil(effect)) << "key " << key;
  }
  /// Colour near the rim of the play button.
  [[nodiscard]] COLORREF buttonColour() const {
    RECT own{};
    GetClientRect(control(player::kIdImage1), &own);
    const window::WindowDc dc(control(player::kIdImage1));
    return GetPixel(dc.get(), own.right / 2, own.bottom / 5);
  }

  app::Captions captions;
  test::FakeDesktop desktop;
  tray::MenuTree menu;
  window::UiQueue queue;
  player::Volume volume;
  Clicks clicks;
  player::PlayerWindow window{{captions, desktop, menu, queue, volume}};
};

TEST_F(PlayerWindowTest, TakesLabelsFromOtherThreadsInOrder) {
  std::jthread([this] {
    for (int i = 0; i <= 100; ++i) window.lblName("buffering... " + std::to_string(i) + "%");
    window.lblName("Радио Культура");
    window.lblSong("Caf\xe9");  // of a server that speaks Windows-1252
    window.lblBPS("bitrate: 128");
    window.lblFormat("mp3");
  }).join();
  EXPECT_EQ(text(player::kIdlblName), "stop");
  settle();
  EXPECT_EQ(text(player::kIdlblName), "Радио Культура");
  EXPECT_EQ(text(player::kIdlblSong), "Café");
  EXPECT_EQ(text(player::kIdlblBPS), "bitrate: 128");
  EXPECT_EQ(text(player::kIdlblFormat), "mp3");
}

TEST_F(PlayerWindowTest, ShowsAnErrorOfAnotherThreadOnItsOwn) {
  std::jthread([this] { window.showError("Can't play the stream"); }).join();
  EXPECT_TRUE(desktop.boxes.empty());
  settle();
  EXPECT_EQ(desktop.boxes, (std::vector<std::string>{"Can't play the stream"}));
}

TEST_F(PlayerWindowTest, SwitchesThePictureWithTheWordsOfTheNameLabel) {
  show();
  const window::Theme theme = window::Theme::current();
  const std::pair<const char*, COLORREF> steps[] = {{"stop", theme.surface},
                                                    {"play", theme.accent},
                                                    {"Pond FM", theme.accent},
                                                    {"stop", theme.surface}};
  for (const auto& [name, colour] : steps) {
    window.lblName(name);
    settle();
    EXPECT_EQ(buttonColour(), colour) << name;
  }
}

TEST_F(PlayerWindowTest, NamesItsControlsForScreenReaders) {
  menu.subplayerplay.Caption = "Wiedergabe";
  captions.set("frmNetRadio.subontop", "Immer oben");
  show();
  EXPECT_EQ(text(player::kIdImage1), "Wiedergabe");
  EXPECT_EQ(text(player::kIdImage2), "Stop");
  EXPECT_EQ(text(player::kIdchkSave), "Record");
  EXPECT_EQ(text(player::kIdSlider1), "Volume");
  EXPECT_EQ(text(player::kIdsubontop), "Immer oben");
  EXPECT_FALSE(text(player::kIdHide).empty());
}

TEST_F(PlayerWindowTest, RecordsByItsBoxAndFollowsTheMenu) {
  show();
  click(middleOf(control(player::kIdchkSave)));
  EXPECT_TRUE(test::pumpUntil([&] { return clicks == Clicks{"record"}; }));
  window.showRecording(false);
  settle();
  EXPECT_EQ(SendMessageW(control(player::kIdchkSave), BM_GETCHECK, 0, 0), BST_UNCHECKED);
}

TEST_F(PlayerWindowTest, WorksByTheKeyboard) {
  volume.set(5000);
  show();
  expectKey(VK_UP, [&] { return volume.get() == 5500; });
  expectKey(VK_LEFT, [&] { return volume.get() == 5000; });
  expectKey(VK_SPACE, [&] { return clicks == Clicks{"toggle"}; });
  expectKey(VK_TAB, [&] { return GetFocus() == control(player::kIdImage2); });
  expectKey(VK_TAB, [&] { return GetFocus() == control(player::kIdchkSave); });
  expectKey(VK_SPACE, [&] { return clicks == Clicks{"toggle", "record"}; });
  expectKey(VK_TAB, [&] { return GetFocus() == control(player::kIdSlider1); });
  expectKey(VK_RIGHT, [&] { return volume.get() == 5500; });
  EXPECT_EQ(SendMessageW(control(player::kIdSlider1), TBM_GETPOS, 0, 0), 5500);
  expectKey(VK_ESCAPE, [&] { return !window.visible(); });
}

TEST_F(PlayerWindowTest, JumpsWithTheSliderToTheClick) {
  show();
  RECT area{};
  GetWindowRect(control(player::kIdSlider1), &area);
  click({area.left + (area.right - area.left) / 4, (area.top + area.bottom) / 2});
  EXPECT_TRUE(test::pumpUntil([&] { return volume.get() > 2000 && volume.get() < 3000; }))
      << volume.get();
}

TEST_F(PlayerWindowTest, AlternatesStationAndSongInOnePlace) {
  window.lblSong("Song");
  show();
  const auto tick = [&] { SendMessageW(window.handle(), WM_TIMER, player::kIdTimer1, 0); };
  tick();
  EXPECT_TRUE(shows(player::kIdlblSong));  // there is no station yet
  window.lbstation("Station");
  settle();
  tick();
  EXPECT_TRUE(shows(player::kIdlbstation) && !shows(player::kIdlblSong));
  tick();
  EXPECT_TRUE(!shows(player::kIdlbstation) && shows(player::kIdlblSong));
}

TEST_F(PlayerWindowTest, LetsGoOfEverythingItMakes) {
  show();
  const auto redress = [&] {
    for (int i = 0; i < 20; ++i) {
      SendMessageW(window.handle(), WM_SYSCOLORCHANGE, 0, 0);
      window.lblSong(std::to_string(i));
      settle();
    }
  };
  redress();
  const int before = test::resources().graphics;
  redress();
  EXPECT_EQ(test::resources().graphics, before);
}

TEST(PlayerWindow, DropsWhatComesAfterItsEnd) {
  app::Captions captions;
  test::FakeDesktop desktop;
  const tray::MenuTree menu;
  window::UiQueue queue;
  player::Volume volume;
  {
    player::PlayerWindow window({captions, desktop, menu, queue, volume});
    window.lblName("late");
    window.showError("late");
  }
  desktop.boxes.clear();
  volume.set(1);
  captions.set("frmNetRadio.subontop", "late");
  test::pumpUntil([] { return false; }, std::chrono::milliseconds(60));
  EXPECT_TRUE(desktop.boxes.empty());
}

TEST(VolForm, OpensAtTheMouseAndLeavesWithTheFocus) {
  const tray::MenuTree menu;
  player::Volume volume;
  player::VolForm volform(volume, menu);
  const POINT mice[] = {{500, 400}, {5, 5}, {1020, 300}};
  for (const POINT& mouse : mice) {
    test::pumpUntil([] { return false; }, std::chrono::milliseconds(kHandMs));
    test::moveMouse(mouse);
    test::pumpUntil([] { return false; }, std::chrono::milliseconds(kHandMs));
    ASSERT_TRUE(test::pumpUntil([&] {
      POINT at{};
      GetCursorPos(&at);
      return at.x == mouse.x && at.y == mouse.y;
    }));
    volform.mnuplayervolume_Click();
    RECT area{};
    GetWindowRect(volform.handle(), &area);
    const LONG width = area.right - area.left;
    const LONG ten_twips = MulDiv(10, window::Dpi::of(nullptr).value(), 1440);
    LONG left = mouse.x - width / 2;
    if (left < 0) left = ten_twips;
    left = std::min<LONG>(left, GetSystemMetrics(SM_CXSCREEN) - width);
    const LONG top = mouse.y - (area.bottom - area.top);
    EXPECT_EQ(area.left, left);
    EXPECT_EQ(area.top, top < 0 ? ten_twips : top);
    EXPECT_TRUE(test::pumpUntil([&] { return GetFocus() != nullptr; }));
  }
  volume.set(5000);
  test::pressKey(VK_DOWN);
  EXPECT_TRUE(test::pumpUntil([&] { return volume.get() == 4500; }));
  SetForegroundWindow(GetDesktopWindow());
  EXPECT_TRUE(test::pumpUntil([&] { return !volform.visible(); }));
}

}  // namespace
