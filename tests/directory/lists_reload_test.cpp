#include "directory/reload.h"

#include "base/text.h"
#include "menu/genres.h"
#include "tests/directory/fixture.h"
#include "tray/station_menus.h"

namespace directory {
namespace {

using Strings = std::vector<std::string>;
using Outcome = TransferResult::Outcome;

class FakeReloadForm final : public ReloadView {
 public:
  bool visible = false;
  Strings progressed;  ///< "status done/genres"

  void show() override { visible = true; }
  void hide() override { visible = false; }
  void progress(const std::string& status, int done, int genres) override {
    progressed.push_back(status + " " + std::to_string(done) + "/" + std::to_string(genres));
  }
};

Strings genres(int first, int last) {
  Strings all;
  for (int i = first; i <= last; ++i) {
    all.push_back("sgenre=" + std::string(menu::kGenreTable[static_cast<std::size_t>(i)].key));
  }
  return all;
}

class ReloadTest : public DirectoryTest {
 protected:
  static constexpr int kAll = menu::kSearchGenre;  // genres that a reload asks for

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
  // From now on nothing has been asked, answered or said.
  void startAfresh() {
    transfer_.requests.clear();
    transfer_.answers.clear();
    desktop_.messages.clear();
  }
  // What each page's address asks for.
  Strings asked() const {
    Strings all;
    for (const auto& request : transfer_.requests) {
      const std::string query(base::behindLast(request, '?'));
      all.push_back(query.substr(0, query.find('&')));
    }
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

TEST_F(ReloadTest, AsksForEveryVisibleGenreInOrderAndTellsHowFarItIs) {
  for (const int hidden : {0, 3, 18}) tree_.mgenre[hidden].Visible = false;
  tree_.subgenre(3)[0] = {"old", "u"};
  auto expected = genres(1, 17);
  expected.erase(expected.begin() + 2);
  for (const bool wanted : {false, true}) {
    startAfresh();
    settings_.showreloadallwindow = wanted ? 1 : 0;
    answerPages(16);
    std::function<void()> look = [&] {
      EXPECT_TRUE(icon_.working) << asked().back();
      EXPECT_EQ(icon_.caption, "Loading Data") << asked().back();
      EXPECT_EQ(reloadform_.visible, wanted) << asked().back();
      transfer_.while_waiting = look;
    };
    transfer_.while_waiting = look;
    reload_.reloadall();
    EXPECT_EQ(asked(), expected);
    EXPECT_TRUE(atRest());
  }
  for (int i = 0; i <= kAll; ++i) {
    const bool reloaded = i < kAll && tree_.mgenre[i].Visible;
    EXPECT_EQ(tree_.subgenre(i)[0].Caption == "new", reloaded) << i;
    EXPECT_EQ(base::fileExists(data(tree_.mgenre[i].Tag + ".dat")), reloaded) << i;
  }
  EXPECT_EQ(tree_.subgenre(3)[0].Caption, "old");
  EXPECT_EQ(reloadform_.progressed.front(), "Loading Data for Alternative 0/16");
  EXPECT_EQ(reloadform_.progressed.back(), "Loading Data for The 70s 15/16");
}

TEST_F(ReloadTest, NamesTheGenreWhereverTheTranslatorPutsIt) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"%t: Daten für %t", "Top", "Top: Daten für Top 0/1"},
      {"%t", "100 %t %t", "100 %t %t 0/1"},
      {"no place", "Top", "no place 0/1"},
      {"", "Top", " 0/1"},
      {"%%t", "", "% 0/1"},
  };
  for (int i = 1; i < kAll; ++i) tree_.mgenre[i].Visible = false;
  for (const auto& [text, genre, expected] : cases) {
    messages_.msgloading = text;
    tree_.mgenre[0].Caption = genre;
    answerPages(1);
    reload_.reloadall();
    EXPECT_EQ(reloadform_.progressed.back(), expected);
  }
}

TEST_F(ReloadTest, CancelDuringTheFifthGenreFinishesItAndAsksForNoSixth) {
  answerPages(4);
  transfer_.answer("no stations");  // so its search belongs to it
  answerPages(14);
  during(5, [&] { reload_.cancel(); });
  reload_.reloadall();
  auto expected = genres(0, 4);
  expected.emplace_back("s=Country");
  EXPECT_EQ(asked(), expected);
  EXPECT_EQ(tree_.subgenre(4)[0].Caption, "new");
  EXPECT_TRUE(base::fileExists(data(tree_.mgenre[4].Tag + ".dat")));
  EXPECT_EQ(tree_.subgenre(5)[0].Caption, "Reload");
  EXPECT_TRUE(atRest());

  startAfresh();
  answerPages(kAll);
  reload_.reloadall();
  EXPECT_EQ(asked(), genres(0, 18)) << "a cancel is not remembered";
}

TEST_F(ReloadTest, AnUnreachableDirectoryIsToldOnceAndEndsIt) {
  for (const Outcome outcome : {Outcome::failed, Outcome::timed_out}) {
    for (const int nth : {1, 3}) {
      startAfresh();
      answerPages(nth - 1);
      transfer_.answer(outcome);
      answerPages(kAll);
      reload_.reloadall();
      EXPECT_EQ(asked(), genres(0, nth - 1));
      EXPECT_EQ(desktop_.messages, Strings{messages_.msgnotonline});
      EXPECT_EQ(tree_.subgenre(3)[0].Caption, "Reload");
      EXPECT_TRUE(atRest());
    }
  }
}

// Each comes first while the third genre is waited for, which is then asked for again.
TEST_F(ReloadTest, WhatIsClickedMeanwhileComesFirstAndMixesWithNothing) {
  const std::tuple<const char*, int, const char*, TransferResult> cases[] = {
      {"a station", 18, "http://h/a.pls", {Outcome::completed, "File1=x"}},
      {"a station out of reach", 18, "http://h/a.pls", {Outcome::failed, {}}},
      {"a reload of the waiting genre", 2, "reload", {Outcome::completed, row("mine", "7")}},
      {"a search", menu::kSearchGenre, "search", {Outcome::completed, row("hit", "7")}},
  };
  actions_.searching = [&] { query_.setSearchText("jazz"); };
  for (const auto& [clicked, menu, address, answer] : cases) {
    SCOPED_TRACE(clicked);
    startAfresh();
    tree_.subgenre(menu)[0] = {"entry", address};
    for (int i = 0; i < kAll; ++i) {
      if (i == 2) transfer_.answers.push_back(answer);
      transfer_.answer(row("all " + std::to_string(i), "1"));
    }
    during(3, [&, genre = menu] { menus_.click({menu::Control::subgenre, 0, genre}); });
    reload_.reloadall();

    ASSERT_EQ(transfer_.requests.size(), 21u);
    transfer_.requests.erase(transfer_.requests.begin() + 2, transfer_.requests.begin() + 4);
    EXPECT_EQ(asked(), genres(0, 18));
    EXPECT_EQ(desktop_.messages.size(), answer.outcome == Outcome::failed ? 1u : 0u);
    for (int i = 0; i < kAll; ++i) {
      const std::string title = "all " + std::to_string(i);
      EXPECT_EQ(entries(tree_.subgenre(i)),
                (Entries{{title, url("1")}, {"-", "xt"}, {"Reload", "reload"}}));
      EXPECT_EQ(fileText(data(tree_.mgenre[i].Tag + ".dat")), title + "%#$" + url("1") + "\r\n");
    }
    EXPECT_TRUE(atRest());
  }
  EXPECT_EQ(tree_.subgenre(menu::kSearchGenre)[0].Caption, "hit");
}

TEST_F(ReloadTest, AStationThatWaitsIsOvertakenByAReloadOfAll) {
  tree_.subgenre(18)[0] = {"station", "http://h/a.pls"};
  answerPages(kAll);
  transfer_.while_waiting = [&] { reload_.reloadall(); };
  menus_.click({menu::Control::subgenre, 0, 18});
  EXPECT_EQ(transfer_.requests.size(), 20u);
  EXPECT_TRUE(actions_.calls.empty() && desktop_.messages.empty());
  EXPECT_TRUE(atRest());
}

TEST_F(ReloadTest, ASecondReloadOfAllTakesOverFromTheFirst) {
  answerPages(3 + kAll);
  during(4, [&] {
    reload_.cancel();  // and is not bound by what was cancelled before
    reload_.reloadall();
    EXPECT_TRUE(atRest());
  });
  reload_.reloadall();
  auto expected = genres(0, 3);
  for (const auto& key : genres(0, 18)) expected.push_back(key);
  EXPECT_EQ(asked(), expected);
  EXPECT_TRUE(atRest());

  // The same while the message about the first is open.
  startAfresh();
  transfer_.answer(Outcome::failed);
  answerPages(kAll);
  desktop_.on_message = [&] { reload_.reloadall(); };
  reload_.reloadall();
  EXPECT_EQ(transfer_.requests.size(), 20u);
  EXPECT_TRUE(atRest());
}

TEST_F(ReloadTest, TheEndOfTheMessageLoopEndsItAndThatOfTheProgramForGood) {
  answerPages(kAll);
  during(6, [&] { transfer_.shutDown(); });
  reload_.reloadall();
  EXPECT_EQ(asked(), genres(0, 5));
  EXPECT_TRUE(desktop_.messages.empty());
  EXPECT_EQ(fileText(data(tree_.mgenre[4].Tag + ".dat")), "new%#$" + url("4") + "\r\n");
  EXPECT_FALSE(base::fileExists(data(tree_.mgenre[5].Tag + ".dat")));
  reload_.shutDown();
  reload_.reloadall();
  EXPECT_EQ(transfer_.requests.size(), 6u);
  EXPECT_FALSE(reloadform_.visible) << "no window comes up any more";
}

class SearchTest : public ReloadTest {
 protected:
  SearchTest() {
    list()[0] = {"found", "http://h/f.pls"};
    list().load() = {"New Search", "search"};
  }
  menu::MenuArray& list() { return tree_.subgenre(menu::kSearchGenre); }
  void click(int index) { menus_.subgenre_Click(menu::kSearchGenre, index); }
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
  query_.setSearchText("rock");  // of an earlier search
  actions_.asking = true;
  click(1);
  EXPECT_TRUE(transfer_.requests.empty()) << "another dialog was open";
  EXPECT_TRUE(atRest());
  transfer_.answer("x");
  click(0);
  EXPECT_EQ(transfer_.requests, Strings{"http://h/f.pls"}) << "that was no Cancel";

  startAfresh();
  actions_.asking = false;
  actions_.searching = [&] {
    click(1);                // "New Search" once more
    menus_.mgenre_Click(7);  // another genre's menu is opened
    EXPECT_TRUE(transfer_.requests.empty());
    query_.setSearchText("jazz");
  };
  transfer_.answer(row("hit", "1"));
  click(1);
  EXPECT_EQ(asked(), Strings{"s=jazz"});
  EXPECT_EQ(list()[0].Caption, "hit");
  EXPECT_EQ(tree_.subgenre(7)[0].Caption, "Reload");
}

}  // namespace
}  // namespace directory
