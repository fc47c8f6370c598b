// The hidden main window, its icon and its menus, used by mouse and keyboard.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <string>
#include <vector>

#include "app/captions.h"
#include "app/desktop_win.h"
#include "app/form1_win.h"
#include "tests/wine_desktop.h"
#include "tray/tray_icon_win.h"

namespace {

using tray::Control;

constexpr int kMain = 0, kGenre = 1, kPlayer = 2;

class Tray : public ::testing::Test {
 protected:
  void SetUp() override {
    icon.emplace(form1.handle(), "C:\\nowhere", desktop);
    icon->addtrayicon();
    ASSERT_TRUE(test::pumpUntil([&] { return test::hasTrayIcon(form1.handle()); }))
        << "the desktop may still be starting";
  }

  void TearDown() override {
    icon.reset();
    EXPECT_FALSE(test::hasTrayIcon(form1.handle()));
  }

  void stations(int genre, int count) {
    auto& menu = tree.subgenre(genre);
    menu[0] = {"Station 1 & friends", "http://127.0.0.1/1"};
    for (int i = 1; i < count; ++i) {
      menu.load() = {"Station " + std::to_string(i + 1), "http://127.0.0.1/"};
    }
  }

  /// Clicks the icon and does `work` once a menu is open, until all menus are closed.
  void withMenu(bool by_left, const std::function<void()>& work) {
    std::atomic<bool> done = false;
    const test::Hands hands([&] {
      test::clickMouse(test::trayIconPlace(), by_left);
      if (test::waitUntil([] { return !test::openMenus().empty(); })) {
        // The keys go to the window under the pointer.
        test::moveMouse(insideOf(test::openMenus().front()));
        Sleep(100);
        work();
      } else {
        ADD_FAILURE() << "no menu opened";
      }
      done = true;
    });
    EXPECT_TRUE(test::pumpUntil([&] { return done && test::openMenus().empty(); },
                                std::chrono::seconds(20)));
  }

  /// A point of the menu's border: no line is chosen by it.
  static POINT insideOf(HWND popup) {
    RECT rect{};
    GetWindowRect(popup, &rect);
    return {rect.left + 1, rect.top + 1};
  }

  static void keys(std::initializer_list<WORD> list) {
    for (const WORD key : list) {
      test::pressKey(key);
      Sleep(30);
    }
  }

  /// Points at the icon, from elsewhere, until a tip says this.
  static bool tipShows(const std::string& text) {
    const auto there = [&] {
      const auto tips = test::trayTips();
      return std::find(tips.begin(), tips.end(), text) != tips.end();
    };
    bool seen = false;
    for (int attempt = 0; attempt < 4 && !seen; ++attempt) {
      test::moveMouse({500, 400});
      test::pumpUntil([] { return false; }, std::chrono::milliseconds(150));
      test::moveMouse(test::trayIconPlace());
      seen = test::pumpUntil(there, std::chrono::milliseconds(1200));
    }
    return seen;
  }

  tray::MenuTree tree;
  int left = kMain;
  int right = kPlayer;
  std::vector<int> opened;
  std::vector<tray::Click> clicks;
  app::Form1 form1{tree,
                   {.mouse_action = [&](bool is_left) { return is_left ? left : right; },
                    .genre_opened = [&](int genre) { opened.push_back(genre); },
                    .clicked = [&](const tray::Click& click) { clicks.push_back(click); },
                    .taskbar_created = [&] { icon->restore(); },
                    .shut_down = [] {}}};
  test::FakeDesktop desktop;
  std::optional<tray::TrayIconWin> icon;
};

TEST_F(Tray, ClickOnTheIconWhileItsMenuIsOpenOpensTheNewOne) {
  std::vector<std::wstring> now;
  withMenu(true, [&] {
    PostMessageW(form1.handle(), 512, 1, WM_RBUTTONUP);
    EXPECT_TRUE(test::waitUntil([&] {
      const auto menus = test::openMenus();
      now = menus.size() == 1 ? test::menuTexts(menus.front()) : std::vector<std::wstring>{};
      return !now.empty() && now.front() == L"Play";
    })) << test::openMenus().size()
        << now.size();
    if (test::openMenus().empty()) return;
    test::moveMouse(insideOf(test::openMenus().front()));
    keys({VK_ESCAPE});
  });
}

TEST_F(Tray, ClickOnALineThatIsNoLongerThereDoesNothing) {
  left = kGenre;
  stations(0, 3);
  withMenu(true, [&] {
    keys({VK_DOWN, VK_RIGHT});
    EXPECT_TRUE(test::waitUntil([] { return test::openMenus().size() == 2; }));
    tree.subgenre(0).unloadAbove(0);  // the other thread waits for input
    tree.subgenre(0)[0].Caption = "New";
    keys({VK_RETURN});
  });
  EXPECT_TRUE(clicks.empty());
}

TEST_F(Tray, MessageBoxIsAnsweredBeforeAMenuOpens) {
  bool menu_opened = true;
  const test::Hands hands([&] {
    const auto box = [] { return FindWindowW(nullptr, L"box of the tray's test"); };
    EXPECT_TRUE(test::waitUntil([&] { return box() != nullptr; }));
    test::clickMouse(test::trayIconPlace());
    Sleep(300);
    menu_opened = !test::openMenus().empty();
    PostMessageW(box(), WM_CLOSE, 0, 0);
  });
  app::DesktopWin().messageBox("Not Online or Site unreachable", "box of the tray's test");
  EXPECT_FALSE(menu_opened);
}

TEST_F(Tray, HundredsOfOpeningsLeaveNothingBehind) {
  constexpr int kRounds = 100;  // of the genre menu and two station menus
  for (int genre = 0; genre < 3; ++genre) stations(genre, 25);
  left = kGenre;
  const auto open = [&] {
    // What a user types: into the first two submenus and out of all of it.
    for (const WPARAM key : {VK_DOWN, VK_RIGHT, VK_LEFT, VK_DOWN, VK_RIGHT, VK_ESCAPE, VK_ESCAPE}) {
      PostMessageW(form1.handle(), WM_KEYDOWN, key, 0);
    }
    SendMessageW(form1.handle(), 512, 1, WM_LBUTTONUP);
    test::pumpUntil([] { return true; });
  };
  for (int i = 0; i < 10; ++i) open();
  const test::Resources before = test::resources();
  opened.clear();
  for (int i = 0; i < kRounds; ++i) open();
  const test::Resources after = test::resources();
  EXPECT_EQ(opened.size(), 2u * kRounds);
  EXPECT_GT(before.graphics, 0);
  // Handles wander a little; one lost in each round would be far more.
  constexpr int kSlack = kRounds / 2;
  EXPECT_LE(after.graphics, before.graphics + kSlack);
  EXPECT_LE(after.kernel, before.kernel + kSlack);
  EXPECT_LE(after.user, before.user + kSlack);
}

TEST_F(Tray, TipIsTheCaptionOfTheLastChangeOfPicture) {
  const std::string loading = "Lade Daten f\xC3\xBCr \xE2\x99\xAB";
  EXPECT_TRUE(tipShows("Kestrel"));
  icon->setCaption(loading);
  EXPECT_TRUE(tipShows("Kestrel"));
  icon->workicon();
  EXPECT_TRUE(tipShows(loading));
  icon->setCaption("Kestrel");
  icon->normalicon();
  EXPECT_TRUE(tipShows("Kestrel"));
  EXPECT_TRUE(desktop.boxes.empty());
}

}  // namespace
