// The small dialogs, used by mouse and keyboard and looked at by their controls.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include <array>
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
#include "window/font.h"
#include "window/utf.h"

namespace {

using directory::OwnEntry;
using Entries = std::vector<OwnEntry>;

BOOL CALLBACK collect(HWND window, LPARAM list) {
  reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
  return TRUE;
}

std::vector<HWND> childrenOf(HWND window) {
  std::vector<HWND> list;
  EnumChildWindows(window, collect, reinterpret_cast<LPARAM>(&list));
  return list;
}

/// Texts that a language may bring, twice as long as the English ones.
void useLongWords(app::Captions& captions) {
  const std::array<const char*, 16> keys{
      "reloadform.Label1", "reloadform.Label4", "searchform.Label2", "searchform.Label3",
      "searchform.Label5", "editfavs.Command1", "editfavs.Command2", "editfavs.Command3",
      "Form5.Label1",      "Form5.Label2",      "Form5.Command1",    "Form5.Command2",
      "Form6.Label1",      "Form6.Label2",      "Form6.Command1",    "Form6.Command2"};
  for (const char* key : keys) captions.set(key, captions.get(key) + " " + captions.get(key));
}

/// Everything inside, nothing over another, every one-line text whole.
void expectFits(HWND window, const std::string& what) {
  RECT client{};
  GetClientRect(window, &client);
  const std::vector<HWND> children = childrenOf(window);
  std::vector<RECT> places;
  for (const HWND child : children) {
    RECT place{}, both{};
    GetWindowRect(child, &place);
    MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&place), 2);
    if (GetParent(child) != window) continue;  // a list's own header
    const std::wstring text = window::windowText(child);
    const std::string name = what + ": " + window::toNarrow(text);
    IntersectRect(&both, &place, &client);
    EXPECT_TRUE(EqualRect(&both, &place)) << name;
    for (const RECT& other : places) EXPECT_FALSE(IntersectRect(&both, &place, &other)) << name;
    places.push_back(place);
    wchar_t kind[32] = {};
    GetClassNameW(child, kind, 32);
    if (std::wstring(kind) != L"Button" && std::wstring(kind) != L"Static") continue;
    if (GetDlgCtrlID(child) == dialogs::kIdReloadAbort) continue;  // has two lines
    auto font = reinterpret_cast<HFONT>(SendMessageW(child, WM_GETFONT, 0, 0));
    const window::UniqueFont drawn = window::messageFont(window::Dpi::of(nullptr));
    if (font == nullptr) font = drawn.get();  // the window draws the text itself
    EXPECT_LE(window::textWidth(font, text), place.right - place.left) << name;
  }
}

class Dialogs : public testing::Test {
 protected:
  void TearDown() override { SetEnvironmentVariableW(L"KESTREL_DPI", nullptr); }

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

TEST_F(Dialogs, SearchGivesTheWordsAsTyped) {
  const std::string words = "  Österreich & 日本 ";
  std::optional<std::string> answer;
  {
    const auto hands = beside(L"searchform", [](HWND) { keys({VK_RETURN}); });
    answer = dialogs::SearchForm(captions, nullptr, words).ask();
  }
  EXPECT_EQ(answer, words);
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
    form.hide();
  }
}

TEST_F(Dialogs, ReloadFollowsANewLanguageWhileItShows) {
  dialogs::ReloadForm form(captions, messages, [] {});
  form.show();
  captions.set("reloadform.Label1", "Einträge aller Genres werden jetzt gleich neu eingelesen");
  EXPECT_EQ(
      window::toNarrow(window::windowText(GetDlgItem(form.handle(), dialogs::kIdReloadLabel1))),
      captions.get("reloadform.Label1"));
  expectFits(form.handle(), "new language");
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

TEST_F(Dialogs, LongWordsFitAtEveryDensity) {
  useLongWords(captions);
  for (const wchar_t* dpi : {L"96", L"120", L"144", L"192"}) {
    SetEnvironmentVariableW(L"KESTREL_DPI", dpi);
    const std::string density = window::toNarrow(dpi);
    dialogs::ReloadForm reload(captions, messages, [] {});
    reload.show();
    expectFits(reload.handle(), "reload " + density);
    const dialogs::SearchForm search(captions, nullptr, "words");
    expectFits(search.handle(), "search " + density);
    const dialogs::EditFavs organiser(captions, nullptr, "Favourites", {{"One", "http://x/"}});
    expectFits(organiser.handle(), "favourites " + density);
    const dialogs::Form5 add(captions, nullptr);
    expectFits(add.handle(), "add " + density);
    const dialogs::Form6 edit(captions, nullptr, {"One", "http://x/"});
    expectFits(edit.handle(), "edit " + density);
  }
}

}  // namespace
