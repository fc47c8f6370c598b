// The small dialogs, used by mouse and keyboard and looked at by their controls.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "dialogs/dialog_ids.h"
#include "dialogs/editfavs_win.h"
#include "dialogs/entry_form_win.h"
#include "dialogs/reloadform_win.h"
#include "dialogs/searchform_win.h"
#include "tests/wine_desktop.h"
#include "window/utf.h"

namespace {

using directory::OwnEntry;
using Entries = std::vector<OwnEntry>;

class Dialogs : public testing::Test {
 protected:
  /// Runs `work` beside the dialog of that class, once it has the focus.
  static test::Hands beside(const wchar_t* dialog, std::function<void(HWND)> work) {
    return test::Hands([dialog, work = std::move(work)] {
      HWND window = nullptr;
      const bool there = test::waitUntil([&] {
        window = FindWindowW(dialog, nullptr);
        return window != nullptr && GetForegroundWindow() == window;
      });
      if (!there) ADD_FAILURE() << "no dialog";
      Sleep(100);
      work(window);
    });
  }

  static void keys(std::initializer_list<WORD> list) {
    for (const WORD key : list) {
      test::pressKey(key);
      Sleep(40);
    }
  }

  static bool okEnabled(HWND form) { return IsWindowEnabled(GetDlgItem(form, IDOK)) != FALSE; }

  app::Captions captions;
  app::Messages messages;
};

constexpr const wchar_t* kEntryForm = L"KestrelEntryForm";

TEST_F(Dialogs, OwnEntryNeedsTitleAndAddress) {
  std::vector<bool> enabled;
  const auto look = [&](HWND form) { enabled.push_back(okEnabled(form)); };
  std::optional<OwnEntry> entry;
  {
    const auto hands = beside(kEntryForm, [&](HWND form) {
      look(form);
      keys({'A', VK_RETURN});  // Enter without an address: nothing
      look(form);
      keys({VK_TAB, 'B'});
      look(form);
      keys({VK_BACK});
      look(form);
      keys({'C', VK_RETURN});
    });
    entry = dialogs::Form5(captions, nullptr).ask();
  }
  EXPECT_EQ(enabled, (std::vector<bool>{false, false, true, false}));
  EXPECT_EQ(entry, (OwnEntry{"a", "c"}));
}

TEST_F(Dialogs, OwnEntryIsEditedAsItStands) {
  const OwnEntry old{"Österreich %#$ 1 ", "  http://127.0.0.1/?a=b&c"};
  std::optional<OwnEntry> entry;
  bool enabled = false;
  {
    const auto hands = beside(kEntryForm, [&](HWND form) {
      enabled = okEnabled(form);
      keys({VK_TAB, VK_TAB, VK_SPACE});
    });
    entry = dialogs::Form6(captions, nullptr, old).ask();
  }
  EXPECT_TRUE(enabled);
  EXPECT_EQ(entry, old);
  {
    const auto hands = beside(kEntryForm, [](HWND) { keys({'X', VK_ESCAPE}); });
    entry = dialogs::Form6(captions, nullptr, old).ask();
  }
  EXPECT_EQ(entry, std::nullopt);
}

TEST_F(Dialogs, OwnerIsBackAfterwardsAndTheProgramsEndEndsThem) {
  const HWND owner =
      CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr, nullptr, nullptr);
  bool disabled = false;
  {
    const auto hands = beside(L"searchform", [&](HWND form) {
      disabled = IsWindowEnabled(owner) == FALSE;
      PostThreadMessageW(GetWindowThreadProcessId(form, nullptr), WM_QUIT, 7, 0);
    });
    EXPECT_EQ(dialogs::SearchForm(captions, owner, "x").ask(), std::nullopt);
  }
  EXPECT_TRUE(disabled);
  EXPECT_TRUE(IsWindowEnabled(owner));
  MSG message{};
  EXPECT_TRUE(PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE)) << "for the next loop";
  EXPECT_EQ(message.wParam, 7U);
  DestroyWindow(owner);
}

TEST_F(Dialogs, ThousandsOfFavouritesAreOrganised) {
  Entries many;
  for (int i = 0; i < 5000; ++i) many.push_back({"Station " + std::to_string(i), "http://x/"});
  std::optional<Entries> left;
  {
    const auto hands = beside(L"editfavs", [](HWND form) {
      const HWND list = GetDlgItem(form, dialogs::kIdListView1);
      keys({VK_SPACE, VK_END, VK_SPACE, VK_DELETE});
      EXPECT_EQ(SendMessageW(list, LVM_GETITEMCOUNT, 0, 0), 4998);
      keys({VK_RETURN});
    });
    left = dialogs::EditFavs(captions, nullptr, "Favourites", many).edit();
  }
  ASSERT_TRUE(left);
  EXPECT_EQ(*left, Entries(many.begin() + 1, many.end() - 1));
}

TEST_F(Dialogs, ReloadIsCancelledOnceAndBeginsFresh) {
  int cancelled = 0;
  dialogs::ReloadForm form(captions, messages, [&] { ++cancelled; });
  const auto control = [&](int id) { return GetDlgItem(form.handle(), id); };
  for (int round = 1; round <= 2; ++round) {
    form.show();
    form.progress("Loading Data for Österreich", 4, 19);
    EXPECT_TRUE(IsWindowEnabled(control(IDCANCEL)));
    EXPECT_EQ(window::windowText(control(dialogs::kIdReloadAbort)), L"");
    EXPECT_EQ(SendMessageW(control(dialogs::kIdReloadProgress), PBM_GETPOS, 0, 0), 4);
    SendMessageW(form.handle(), WM_CLOSE, 0, 0);
    SendMessageW(form.handle(), WM_CLOSE, 0, 0);
    EXPECT_EQ(cancelled, round);
    EXPECT_EQ(window::toNarrow(window::windowText(control(dialogs::kIdReloadAbort))),
              messages.msgreloadabort);
    captions.set("reloadform.Label1", "Einträge aller Genres");  // a new language while it shows
    EXPECT_EQ(window::toNarrow(window::windowText(control(dialogs::kIdReloadLabel1))),
              captions.get("reloadform.Label1"));
    form.hide();
  }
}

TEST_F(Dialogs, ProgressDoesNotComeToTheFrontAgain) {
  dialogs::ReloadForm form(captions, messages, [] {});
  dialogs::ReloadForm other(captions, messages, [] {});
  form.show();
  other.show();
  ASSERT_TRUE(test::pumpUntil([&] { return GetForegroundWindow() == other.handle(); }));
  form.progress("Loading", 1, 3);
  form.show();  // a second reload takes over
  test::pumpUntil([] { return false; }, std::chrono::milliseconds(100));
  EXPECT_EQ(GetForegroundWindow(), other.handle());
}

}  // namespace
