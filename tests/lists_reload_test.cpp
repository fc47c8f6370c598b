#include "directory/reload.h"

#include "directory/genres.h"
#include "tests/directory_fixture.h"
#include "tray/station_menus.h"

namespace directory {
namespace {

using Strings = std::vector<std::string>;
using Outcome = TransferResult::Outcome;

class FakeReloadForm final : public ReloadView {
 public:
  bool visible = false;
  int shown = 0;
  Strings progressed;  ///< "status done/genres"

  void show() override {
    visible = true;
    ++shown;
  }
  void hide() override { visible = false; }
  void progress(const std::string& status, int done, int genres) override {
    progressed.push_back(status + " " + std::to_string(done) + "/" + std::to_string(genres));
  }
};

// What a page's address asks for: "Jazz", or "s:Jazz" for the genre as a search.
std::string asked(const std::string& address) {
  const auto genre = address.find("sgenre=");
  const auto from = genre != address.npos ? genre + 7 : address.find("?s=") + 3;
  return (genre != address.npos ? "" : "s:") + address.substr(from, address.find('&') - from);
}

Strings keys(int first, int last) {
  Strings all;
  for (int i = first; i <= last; ++i) {
    all.emplace_back(kGenreTable[static_cast<std::size_t>(i)].key);
  }
  return all;
}

class ReloadTest : public DirectoryTest {
 protected:
  void answerPages(int count) {
    for (int i = 0; i < count; ++i) transfer_.answer(row("new", std::to_string(i)));
  }
  // Does `what` while the genre numbered `nth` (from 1) is waited for.
  void during(int nth, std::function<void()> what) {
    transfer_.while_waiting = [this, nth, what = std::move(what)] {
      if (nth > 1) {
        during(nth - 1, what);
      } else {
        what();
      }
    };
  }
  Strings asked() const {
    Strings all;
    for (const auto& request : transfer_.requests) all.push_back(directory::asked(request));
    return all;
  }
  bool atRest() const {
    return !icon_.working && icon_.caption == "Kestrel" && !reloadform_.visible;
  }

  FakeReloadForm reloadform_;
  FakeActions actions_;
  Reload reload_{{query_, lists_, reloadform_, icon_, tree_, settings_, messages_}};
  tray::StationMenus menus_{tree_, query_, icon_, actions_};
};

TEST_F(ReloadTest, AsksForEveryGenreInOrderAndNeverForTheSearchList) {
  answerPages(19);
  reload_.reloadall();
  EXPECT_EQ(asked(), keys(0, 18));
  for (int i = 0; i < 19; ++i) EXPECT_EQ(tree_.subgenre(i)[0].Caption, "new") << i;
  EXPECT_NE(tree_.subgenre(19)[0].Caption, "new");
  EXPECT_TRUE(atRest());
}

TEST_F(ReloadTest, AHiddenGenreKeepsItsEntriesAndCountsForNothing) {
  for (const int i : {0, 3, 18}) tree_.mgenre[i].Visible = false;
  tree_.subgenre(3)[0] = {"old", "u"};
  putFile(data(tree_.mgenre[3].Tag + ".dat"), "old%#$u\r\n");
  answerPages(16);
  reload_.reloadall();
  auto expected = keys(1, 17);
  expected.erase(expected.begin() + 2);
  EXPECT_EQ(asked(), expected);
  EXPECT_EQ(tree_.subgenre(3)[0].Caption, "old");
  EXPECT_EQ(fileText(data(tree_.mgenre[3].Tag + ".dat")), "old%#$u\r\n");
  EXPECT_EQ(reloadform_.progressed.front(),
            "Loading Data for " + tree_.mgenre[1].Caption + " 0/16");
  EXPECT_EQ(reloadform_.progressed.back(),
            "Loading Data for " + tree_.mgenre[17].Caption + " 15/16");
}

TEST_F(ReloadTest, NamesTheGenreWhereverTheTranslatorPutsIt) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"%t: Daten für %t", "Top", "Top: Daten für Top 0/1"},
      {"%t", "100 %t %t", "100 %t %t 0/1"},
      {"no place", "Top", "no place 0/1"},
      {"", "Top", " 0/1"},
      {"%%t", "", "% 0/1"},
  };
  for (int i = 1; i < 19; ++i) tree_.mgenre[i].Visible = false;
  for (const auto& [text, genre, expected] : cases) {
    messages_.msgloading = text;
    tree_.mgenre[0].Caption = genre;
    answerPages(1);
    reload_.reloadall();
    EXPECT_EQ(reloadform_.progressed.back(), expected);
  }
}

TEST_F(ReloadTest, TheWindowIsShownOnlyIfTheUserWantsIt) {
  for (const bool wanted : {false, true}) {
    settings_.showreloadallwindow = wanted ? 1 : 0;
    bool visible = false;
    answerPages(19);
    during(7, [&] { visible = reloadform_.visible; });
    reload_.reloadall();
    EXPECT_EQ(visible, wanted);
    EXPECT_TRUE(atRest());
  }
}

TEST_F(ReloadTest, TheIconWorksAsLongAsItLasts) {
  answerPages(19);
  int waits = 0;
  std::function<void()> look = [&] {
    ++waits;
    EXPECT_TRUE(icon_.working) << waits;
    EXPECT_EQ(icon_.caption, "Loading Data") << waits;
    transfer_.while_waiting = look;
  };
  transfer_.while_waiting = look;
  reload_.reloadall();
  EXPECT_EQ(waits, 19);
  transfer_.while_waiting = nullptr;
  EXPECT_TRUE(atRest());
}

TEST_F(ReloadTest, CancelDuringTheFifthGenreFinishesItAndAsksForNoSixth) {
  for (int i = 0; i < 4; ++i) transfer_.answer(row("new", "1"));
  transfer_.answer("no stations");  // so its search belongs to it
  answerPages(14);
  during(5, [&] { reload_.cancel(); });
  reload_.reloadall();
  auto expected = keys(0, 4);
  expected.push_back("s:" + expected.back());
  EXPECT_EQ(asked(), expected);
  EXPECT_EQ(tree_.subgenre(4)[0].Caption, "new");
  EXPECT_TRUE(app::fileExists(data(tree_.mgenre[4].Tag + ".dat")));
  EXPECT_EQ(tree_.subgenre(5)[0].Caption, "Reload");
  EXPECT_TRUE(atRest());

  transfer_.requests.clear();
  answerPages(19);
  reload_.reloadall();
  EXPECT_EQ(transfer_.requests.size(), 19u) << "a cancel is not remembered";
}

TEST_F(ReloadTest, AnUnreachableDirectoryIsToldOnceAndEndsIt) {
  for (const Outcome outcome : {Outcome::failed, Outcome::timed_out}) {
    for (const std::size_t nth : {std::size_t{1}, std::size_t{3}}) {
      transfer_.requests.clear();
      transfer_.answers.clear();
      desktop_.messages.clear();
      answerPages(static_cast<int>(nth) - 1);
      transfer_.answer(outcome);
      answerPages(19);
      reload_.reloadall();
      EXPECT_EQ(transfer_.requests.size(), nth);
      EXPECT_EQ(desktop_.messages, Strings{messages_.msgnotonline});
      EXPECT_TRUE(atRest());
    }
  }
}

TEST_F(ReloadTest, AClickedStationComesFirstAndThenTheWaitingGenreAgain) {
  tree_.subgenre(18)[0] = {"station", "http://h/a.pls"};
  for (const bool reachable : {true, false}) {
    transfer_.requests.clear();
    desktop_.messages.clear();
    transfer_.answers.clear();
    answerPages(2);
    reachable ? transfer_.answer("File1=x") : transfer_.answer(Outcome::failed);
    answerPages(17);
    during(3, [&] { menus_.click({tray::Control::subgenre, 0, 18}); });
    tree_.subgenre(18)[0] = {"station", "http://h/a.pls"};
    reload_.reloadall();

    ASSERT_EQ(transfer_.requests.size(), 21u);
    EXPECT_EQ(transfer_.requests[3], "http://h/a.pls");
    transfer_.requests.erase(transfer_.requests.begin() + 2, transfer_.requests.begin() + 4);
    EXPECT_EQ(asked(), keys(0, 18));
    EXPECT_EQ(desktop_.messages.size(), reachable ? 0u : 1u);
    EXPECT_TRUE(atRest());
  }
}

TEST_F(ReloadTest, AGenreReloadedFromItsMenuMeanwhileMixesWithNoOther) {
  for (int i = 0; i < 2; ++i) transfer_.answer(row("all " + std::to_string(i), "1"));
  transfer_.answer(row("mine", "7"));
  for (int i = 2; i < 19; ++i) transfer_.answer(row("all " + std::to_string(i), "1"));
  during(3, [&] { menus_.click({tray::Control::subgenre, 0, 2}); });
  tree_.subgenre(2)[0] = {"Reload", "reload"};
  reload_.reloadall();
  for (int i = 0; i < 19; ++i) {
    const std::string title = "all " + std::to_string(i);
    EXPECT_EQ(entries(tree_.subgenre(i)),
              (Entries{{title, url("1")}, {"-", "xt"}, {"Reload", "reload"}}));
    EXPECT_EQ(fileText(data(tree_.mgenre[i].Tag + ".dat")), title + "%#$" + url("1") + "\r\n");
  }
  EXPECT_TRUE(atRest());
}

TEST_F(ReloadTest, AStationThatWaitsIsOvertakenByAReloadOfAll) {
  tree_.subgenre(18)[0] = {"station", "http://h/a.pls"};
  answerPages(19);
  transfer_.while_waiting = [&] { reload_.reloadall(); };
  menus_.click({tray::Control::subgenre, 0, 18});
  EXPECT_EQ(transfer_.requests.size(), 20u);
  EXPECT_TRUE(actions_.calls.empty() && desktop_.messages.empty());
  EXPECT_TRUE(atRest());
}

TEST_F(ReloadTest, ASecondReloadOfAllTakesOverFromTheFirst) {
  answerPages(3 + 19);
  during(4, [&] {
    reload_.cancel();  // and is not bound by what was cancelled before
    reload_.reloadall();
    EXPECT_TRUE(atRest());
  });
  reload_.reloadall();
  auto expected = keys(0, 3);
  for (const auto& key : keys(0, 18)) expected.push_back(key);
  EXPECT_EQ(asked(), expected);
  EXPECT_TRUE(atRest());

  // The same while the message about the first is open.
  transfer_.requests.clear();
  transfer_.answer(Outcome::failed);
  answerPages(19);
  desktop_.on_message = [&] { reload_.reloadall(); };
  reload_.reloadall();
  EXPECT_EQ(transfer_.requests.size(), 20u);
  EXPECT_TRUE(atRest());
}

TEST_F(ReloadTest, TheEndOfTheProgramEndsItAndNothingFollows) {
  answerPages(19);
  during(6, [&] {
    reload_.shutDown();
    transfer_.shutDown();
  });
  reload_.reloadall();
  EXPECT_EQ(transfer_.requests.size(), 6u);
  EXPECT_TRUE(desktop_.messages.empty());
  EXPECT_EQ(fileText(data(tree_.mgenre[4].Tag + ".dat")), "new%#$" + url("4") + "\r\n");
  EXPECT_FALSE(app::fileExists(data(tree_.mgenre[5].Tag + ".dat")));

  reload_.reloadall();
  EXPECT_EQ(transfer_.requests.size(), 6u);
  EXPECT_EQ(reloadform_.shown, 1) << "no window comes up any more";
}

TEST_F(ReloadTest, ATransferThatAnswersNoMoreEndsIt) {
  answerPages(19);
  during(6, [&] { transfer_.shutDown(); });  // somebody else has ended the message loop
  reload_.reloadall();
  EXPECT_EQ(transfer_.requests.size(), 6u);
  EXPECT_TRUE(desktop_.messages.empty());
}

class SearchTest : public ReloadTest {
 protected:
  SearchTest() {
    list()[0] = {"found", "http://h/f.pls"};
    list().load() = {"New Search", "search"};
  }
  tray::MenuArray& list() { return tree_.subgenre(tray::kSearchGenre); }
  void click(int index) { menus_.subgenre_Click(tray::kSearchGenre, index); }
};

TEST_F(SearchTest, SendsTheWordsAsTypedAndFillsTheList) {
  const char* words[] = {"smooth  jazz", "", "a&b=c", " - ", "M\xfcnchen", "%#$"};
  for (const char* text : words) {
    actions_.searching = [&] { query_.setSearchText(text); };
    transfer_.answer(row("hit", "1"));
    click(list().UBound());
    EXPECT_NE(transfer_.requests.back().find(std::string("?s=") + text + "&maxbitrate="),
              std::string::npos);
    EXPECT_EQ(entries(list()), (Entries{{"hit", url("1")}, {"-", "xt"}, {"New Search", "search"}}));
    EXPECT_EQ(fileText(data("search.dat")), "hit%#$" + url("1") + "\r\n");
    EXPECT_TRUE(atRest());
  }
}

TEST_F(SearchTest, AfterCancelTheListDoesNothingUntilASearchIsConfirmed) {
  actions_.searching = [&] { query_.setSearchText("-"); };
  click(1);
  click(0);
  EXPECT_EQ(actions_.calls, Strings{"search"});
  EXPECT_TRUE(transfer_.requests.empty());
  EXPECT_TRUE(atRest());

  actions_.searching = [&] { query_.setSearchText("jazz"); };
  transfer_.answer("no stations");
  click(1);
  EXPECT_EQ(transfer_.requests.size(), 1u) << "a search is not retried as one";
  EXPECT_EQ(list()[0].Caption, "found") << "the previous results stay";
  transfer_.answer("x");
  click(0);
  EXPECT_EQ(transfer_.requests.back(), "http://h/f.pls");
}

TEST_F(SearchTest, TheDialogOpensOnceAndTheListIsMeantWhateverElseIsDone) {
  actions_.searching = [&] {
    click(1);                // "New Search" once more
    menus_.mgenre_Click(7);  // another genre's menu is opened
    EXPECT_TRUE(transfer_.requests.empty());
    query_.setSearchText("jazz");
  };
  transfer_.answer(row("hit", "1"));
  click(1);
  EXPECT_EQ(asked(), Strings{"s:jazz"});
  EXPECT_EQ(list()[0].Caption, "hit");
  EXPECT_EQ(tree_.subgenre(7)[0].Caption, "Reload");
}

TEST_F(SearchTest, NothingIsSearchedForWhileAnotherDialogIsOpen) {
  query_.setSearchText("jazz");  // of an earlier search
  actions_.asking = true;
  click(1);
  EXPECT_TRUE(transfer_.requests.empty());
  EXPECT_TRUE(atRest());
  transfer_.answer("x");
  click(0);
  EXPECT_EQ(transfer_.requests.back(), "http://h/f.pls") << "that was no Cancel";
}

TEST_F(SearchTest, ASearchDuringAReloadOfAllComesFirst) {
  answerPages(2);
  transfer_.answer(row("hit", "1"));
  answerPages(17);
  actions_.searching = [&] { query_.setSearchText("jazz"); };
  during(3, [&] { click(1); });
  reload_.reloadall();
  EXPECT_EQ(transfer_.requests.size(), 21u);
  EXPECT_EQ(list()[0].Caption, "hit");
  EXPECT_EQ(tree_.subgenre(2)[0].Caption, "new");
  EXPECT_TRUE(atRest());
}

}  // namespace
}  // namespace directory
