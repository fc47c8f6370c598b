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
#include "app/splash_win.h"
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

  static std::vector<std::wstring> texts() { return test::menuTexts(test::openMenus().front()); }

  tray::MenuTree tree;
  int left = kMain;
  int right = kPlayer;
  std::vector<int> opened;
  std::vector<tray::Click> clicks;
  std::size_t menus_at_click = 99;
  int shut_downs = 0;
  std::function<void()> on_open = [] {};
  app::Form1 form1{tree,
                   {.mouse_action = [&](bool is_left) { return is_left ? left : right; },
                    .genre_opened =
                        [&](int genre) {
                          opened.push_back(genre);
                          on_open();
                        },
                    .clicked =
                        [&](const tray::Click& click) {
                          clicks.push_back(click);
                          menus_at_click = test::openMenus().size();
                        },
                    .taskbar_created = [&] { icon->restore(); },
                    .shut_down = [&] { ++shut_downs; }}};
  test::FakeDesktop desktop;
  std::optional<tray::TrayIconWin> icon;
};

TEST_F(Tray, ButtonsOpenTheMenusOfTheSettings) {
  std::vector<std::wstring> main, player;
  withMenu(true, [&] {
    main = texts();
    keys({VK_ESCAPE});
  });
  withMenu(false, [&] {
    player = texts();
    keys({VK_ESCAPE});
  });
  ASSERT_FALSE(main.empty());
  EXPECT_EQ(main.front(), L"Genres");
  EXPECT_EQ(main.back(), L"Quit");
  ASSERT_FALSE(player.empty());
  EXPECT_EQ(player.front(), L"Play");
  EXPECT_TRUE(clicks.empty());
}

TEST_F(Tray, OtherSettingsAndMessagesOpenNothing) {
  left = 3;
  SendMessageW(form1.handle(), 512, 1, WM_LBUTTONUP);
  for (const LPARAM mouse : {WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_RBUTTONDOWN, WM_LBUTTONDBLCLK}) {
    SendMessageW(form1.handle(), 512, 1, mouse);
  }
  EXPECT_TRUE(test::openMenus().empty());
}

TEST_F(Tray, KeyboardReachesAStation) {
  left = kGenre;
  stations(1, 3);
  withMenu(true, [&] {
    keys({VK_DOWN, VK_DOWN, VK_RIGHT});
    EXPECT_TRUE(test::waitUntil([] { return test::openMenus().size() == 2; }));
    keys({VK_DOWN, VK_RETURN});
  });
  EXPECT_EQ(opened, std::vector<int>{1});
  ASSERT_EQ(clicks.size(), 1u);
  EXPECT_EQ(clicks[0].control, Control::subgenre);
  EXPECT_EQ(clicks[0].index, 1);
  EXPECT_EQ(clicks[0].genre, 1);
  EXPECT_EQ(menus_at_click, 0u) << "the menu closes first";
}

TEST_F(Tray, FiveHundredStationsStayWithinReach) {
  left = kGenre;
  stations(0, 500);
  const int page_from = 15, page_to = 60;
  RECT menu{};
  const auto choose = [&](std::initializer_list<WORD> way) {
    withMenu(true, [&] {
      keys({VK_DOWN, VK_RIGHT});
      EXPECT_TRUE(test::waitUntil([] { return test::openMenus().size() == 2; }));
      GetWindowRect(test::openMenus().front(), &menu);
      for (const WORD key : way) {
        test::pressKey(key);
        Sleep(300);
      }
      keys({VK_RETURN});
    });
    return clicks.empty() ? -1 : clicks.back().index;
  };
  const int one_page = choose({VK_NEXT});
  EXPECT_GE(one_page, page_from);
  EXPECT_LE(one_page, page_to);
  EXPECT_EQ(choose({VK_NEXT, VK_NEXT, VK_PRIOR}), one_page);
  EXPECT_EQ(choose({VK_END, VK_NEXT, VK_UP}), 498) << "a page does not go beyond the end";
  EXPECT_GE(menu.top, 0);
  EXPECT_LE(menu.bottom, GetSystemMetrics(SM_CYSCREEN));
}

TEST_F(Tray, MenuClosesWhenClickedAway) {
  withMenu(true, [] { test::clickMouse({5, 5}); });
  EXPECT_TRUE(clicks.empty());
}

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

TEST_F(Tray, EndOfTheSessionClosesTheMenuAndShutsDownOnce) {
  withMenu(true, [&] {
    EXPECT_EQ(SendMessageW(form1.handle(), WM_QUERYENDSESSION, 0, 0), TRUE);
    SendMessageW(form1.handle(), WM_ENDSESSION, FALSE, 0);
    EXPECT_EQ(shut_downs, 0);
    SendMessageW(form1.handle(), WM_ENDSESSION, TRUE, 0);
  });
  SendMessageW(form1.handle(), WM_CLOSE, 0, 0);
  EXPECT_EQ(shut_downs, 1);
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

TEST_F(Tray, ThousandOpeningsLeaveNothingBehind) {
  constexpr int kRounds = 334;  // of the genre menu and two station menus
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
  constexpr int kSlack = kRounds / 4;
  EXPECT_LE(after.graphics, before.graphics + kSlack);
  EXPECT_LE(after.kernel, before.kernel + kSlack);
  EXPECT_LE(after.user, before.user + kSlack);
}

TEST_F(Tray, IconComesBackWithANewTaskbar) {
  NOTIFYICONDATAA record{};
  record.cbSize = NOTIFYICONDATAA_V1_SIZE;
  record.hWnd = form1.handle();
  record.uID = 1;
  ASSERT_TRUE(Shell_NotifyIconA(NIM_DELETE, &record));
  ASSERT_FALSE(test::hasTrayIcon(form1.handle()));
  SendNotifyMessageW(HWND_BROADCAST, RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
  EXPECT_TRUE(test::pumpUntil([&] { return test::hasTrayIcon(form1.handle()); }));
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

TEST(TrayIcon, TellsOfABrokenIconFileOnlyAtTheStart) {
  CreateDirectoryW(L"C:\\kestrel-test", nullptr);
  CreateDirectoryW(L"C:\\kestrel-test\\data", nullptr);
  for (const wchar_t* name : {L"kesnormal.ico", L"keswork.ico"}) {
    const std::wstring path = std::wstring(L"C:\\kestrel-test\\data\\") + name;
    CloseHandle(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
  }
  tray::MenuTree tree;
  const app::Form1 form1(tree, {});
  test::FakeDesktop desktop;
  tray::TrayIconWin icon(form1.handle(), "C:\\kestrel-test", desktop);
  icon.workicon();
  icon.normalicon();
  ASSERT_EQ(desktop.boxes.size(), 1u);
  EXPECT_EQ(desktop.boxes[0], "The Icon File ist not Correct!\r\nUse Internal Icon");
}

TEST(Splash, TicksAndMayGoInItsTick) {
  app::Captions captions;
  std::optional<app::Splash> splash;
  int ticks = 0;
  splash.emplace(captions, "1.1.0", [&] {
    if (++ticks == 3) splash.reset();
  });
  splash->open();
  captions.set("splash.Label1", "Programm wird geladen");
  EXPECT_NE(FindWindowExW(splash->handle(), nullptr, L"STATIC", L"1.1.0"), nullptr);
  EXPECT_NE(FindWindowExW(splash->handle(), nullptr, L"STATIC", L"Programm wird geladen"), nullptr);
  EXPECT_TRUE(test::pumpUntil([&] { return ticks == 3; }));
  EXPECT_FALSE(splash.has_value());
}

}  // namespace
