#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <vector>

#include "res/resource.h"
#include "tray/tray_icon_win.h"
#include "window/menu.h"
#include "window/message_pump.h"
#include "window/mnemonics.h"
#include "window/picture.h"
#include "window/ui_queue.h"
#include "window/window.h"

namespace {

/// Dispatches messages until the condition holds; false after a long time.
bool pumpUntil(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    (void)window::dispatchPending();
    Sleep(5);
  }
  return true;
}

int g_closed = 0;
void closeNumber(int) {
  ++g_closed;
}
using Number = base::UniqueHandle<int, closeNumber>;

TEST(UniqueHandle, ClosesWhatItOwnsOnce) {
  g_closed = 0;
  {
    Number first(1);
    Number second(std::move(first));
    first = Number(2);
    second.reset(3);  // closes 1
    EXPECT_EQ(g_closed, 1);
    EXPECT_EQ(first.release(), 2);  // nobody's now
  }
  EXPECT_EQ(g_closed, 2);
}

/// Records its messages; some have effects.
class Probe : public window::Window {
 public:
  static constexpr UINT kThrow = WM_APP, kDelete = WM_APP + 1;

  Probe() {
    create({.class_name = L"KestrelProbe", .caption = "Probe", .width = 100, .height = 50});
  }

  std::optional<LRESULT> onMessage(UINT message, WPARAM, LPARAM) override {
    if (message == WM_DESTROY) ++destroy_messages;
    if (message == kThrow) throw std::runtime_error("thrown");
    if (message == kDelete) {
      delete this;
      return 7;
    }
    return std::nullopt;
  }
  void onDpiChanged() override { ++dpi_changes; }

  int dpi_changes = 0;
  static inline int destroy_messages = 0;
};

TEST(Window, MayDieBeforeItsObjectAndAfterIt) {
  Probe::destroy_messages = 0;
  HWND native = nullptr;
  {
    const Probe probe;
    native = probe.handle();
    EXPECT_TRUE(IsWindow(native));
  }
  EXPECT_FALSE(IsWindow(native));
  EXPECT_EQ(Probe::destroy_messages, 0) << "called its object";
  const Probe probe;
  DestroyWindow(probe.handle());
  EXPECT_EQ(probe.handle(), nullptr);
}

TEST(Window, HandlerMayThrowOrDeleteItsObject) {
  const HWND native = (new Probe)->handle();
  EXPECT_EQ(SendMessageW(native, Probe::kThrow, 0, 0), 0);
  EXPECT_EQ(SendMessageW(native, Probe::kDelete, 0, 0), 7);
  EXPECT_FALSE(IsWindow(native));
}

TEST(Window, TakesTheSuggestedPlaceOfANewScreen) {
  Probe probe;
  RECT suggested{10, 20, 410, 220};
  SendMessageW(probe.handle(), WM_DPICHANGED, MAKEWPARAM(192, 192),
               reinterpret_cast<LPARAM>(&suggested));
  RECT place{};
  GetWindowRect(probe.handle(), &place);
  EXPECT_TRUE(EqualRect(&place, &suggested));
  EXPECT_EQ(probe.dpi(), window::Dpi(192));
  EXPECT_EQ(probe.dpi_changes, 1);
}

TEST(Dpi, ScalesAWindowByTheEnvironmentForTests) {
  SetEnvironmentVariableW(L"KESTREL_DPI", L"192");
  const Probe probe;
  SetEnvironmentVariableW(L"KESTREL_DPI", nullptr);
  RECT client{};
  GetClientRect(probe.handle(), &client);
  EXPECT_EQ(client.right, 200);
  EXPECT_EQ(client.bottom, 100);
}

TEST(Dpi, RoundsToTheNearestPixel) {
  EXPECT_EQ(window::Dpi(144).scale(5), 8);
  EXPECT_EQ(window::Dpi(144).scale(-5), -8);
}

TEST(UiQueue, RunsAllOnItsOwnThreadInTheirOrder) {
  window::UiQueue queue;
  const DWORD own = GetCurrentThreadId();
  std::vector<int> seen;
  const std::jthread poster([&] {
    for (int i = 0; i < 500; ++i) {
      queue.post([&, i] { seen.push_back(GetCurrentThreadId() == own ? i : -1); });
    }
  });
  ASSERT_TRUE(pumpUntil([&] { return seen.size() == 500; }));
  EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
  EXPECT_EQ(seen.front(), 0);
}

TEST(UiQueue, SurvivesAThrowingTaskAndGoesOnInsideAMessageBox) {
  window::UiQueue queue;
  bool ran = false;
  queue.post([] { throw std::runtime_error("thrown"); });
  queue.post([&] { MessageBoxW(nullptr, L"modal", L"kestrel test box", MB_OK); });
  queue.post([&] {
    ran = true;
    PostMessageW(FindWindowW(nullptr, L"kestrel test box"), WM_CLOSE, 0, 0);
  });
  EXPECT_TRUE(pumpUntil([&] { return ran; }));
}

TEST(UiQueue, DropsWhatComesAfterItsEnd) {
  window::UiQueue queue;
  int runs = 0;
  queue.post([&] { ++runs; });
  queue.close();
  queue.post([&] { ++runs; });
  (void)window::dispatchPending();
  EXPECT_EQ(runs, 0);
}

std::string many(const char* character) {
  std::string text;
  for (int i = 0; i < 50'000; ++i) text += character;
  return text;
}

TEST(Mnemonics, GiveEachCaptionALetterOfItsOwn) {
  window::Mnemonics letters;
  const std::pair<const char*, const char*> cases[] = {
      {"Select all", "&Select all"},
      {"Select None", "Select &None"},
      {"Stop \"now\"", "S&top \"now\""},
      {"ns", "ns"},  // all are taken
      {"R&B", "&R&&B"},
      {"\xC3\xA4ndern", "&\xC3\xA4ndern"},
      {"\xC3\x84", "\xC3\x84"},  // the same letter
      {"...", "..."},
      {"", ""},
  };
  for (const auto& [caption, marked] : cases) EXPECT_EQ(letters.mark(caption), marked);
  EXPECT_EQ(window::Mnemonics::plain("R&B"), "R&&B");
}

TEST(MenuText, FitsTheScreenWithoutSplittingACharacter) {
  const std::wstring shown = window::menuText({.caption = many("\xF0\x9F\x8E\xB5")}, 300);
  ASSERT_LT(shown.size(), 300u);
  EXPECT_EQ(shown.back(), L'\u2026');
  EXPECT_TRUE(IS_LOW_SURROGATE(shown[shown.size() - 2]));
}

TEST(TrayIcon, CutsTheTipBetweenCharacters) {
  ASSERT_EQ(GetACP(), 65001u) << "the manifest's code page";
  struct Case {
    std::string text;
    std::size_t bytes;
    std::size_t kept;
  };
  const Case cases[] = {
      {"Kestrel", 63, 7},
      {std::string(100, 'x'), 63, 63},
      {"x" + many("\xC3\xA4"), 62, 61},
      {many("\xF0\x9F\x8E\xB5"), 63, 60},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(tray::cutToCodePage(each.text, each.bytes), each.text.substr(0, each.kept));
  }
}

TEST(Resources, PicturesLoadAtEveryDensity) {
  for (const int picture : {IDP_SPLASH, IDP_PLAY, IDP_STOP, IDP_RECORD_OFF, IDP_RECORD_ON,
                            IDP_VOLUME, IDP_PIN, IDP_CLOSE, IDP_MENU}) {
    for (const int dpi : {96, 120, 144, 192, 288}) {
      const auto bitmap = window::loadPicture(picture, {20, 10}, window::Dpi(dpi));
      BITMAP shape{};
      ASSERT_NE(GetObjectW(bitmap.get(), sizeof(shape), &shape), 0) << picture << " at " << dpi;
      EXPECT_EQ(shape.bmWidth, window::Dpi(dpi).scale(20));
    }
  }
  EXPECT_FALSE(window::loadPicture(9999, {20, 10}, window::Dpi(96)));
}

TEST(Resources, ManifestAsksForWhatTheProgramRestsOn) {
  const HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(1), RT_MANIFEST);
  ASSERT_NE(found, nullptr);
  const std::string_view text(static_cast<const char*>(LockResource(LoadResource(nullptr, found))),
                              SizeofResource(nullptr, found));
  for (const char* part : {"PerMonitorV2", "activeCodePage", "Common-Controls", "asInvoker"}) {
    EXPECT_NE(text.find(part), std::string_view::npos) << part;
  }
}

}  // namespace
