#include <gtest/gtest.h>

#include "directory/genres.h"
#include "directory/marker_search.h"
#include "directory/page.h"
#include "tests/directory_fixture.h"

namespace directory {
namespace {

using tray::MenuArray;

Entries scanned(std::string_view page) {
  Entries all;
  for (const auto& station : scanPage(page)) all.emplace_back(station.title, station.link);
  return all;
}

TEST(Page, FindsTheMarkerAtEveryOffset) {
  for (std::size_t size = 0; size < 300; ++size) {
    std::string page(size, 'k');
    EXPECT_EQ(findMarker(page, 0), page.npos);
    page += "KESTREL-playlist.PLS";
    EXPECT_EQ(findMarker(page, 0), size);
    page.append(300 - size, '-');
    EXPECT_EQ(findMarker(page, 0), size);
    EXPECT_EQ(findMarker(page, size + 1), page.npos);
  }
}

TEST(Page, TakesLinkAndTitleAsTheyStand) {
  EXPECT_EQ(scanned("<html>" + row(" Caf&eacute; %#$ ", "1") + row("", "2")),
            (Entries{{" Caf&eacute; %#$ ", "/sbin/kestrel-playlist.pls?rn=1&file=filename.pls"},
                     {"", "/sbin/kestrel-playlist.pls?rn=2&file=filename.pls"}}));
}

TEST(Page, BrokenStationsTakeOverThePreviousFields) {
  const std::pair<std::string, Entries> cases[] = {
      {"", {}},
      {"<h1>Service unavailable</h1>", {}},
      // Too near the start for the six characters in front: no link yet.
      {"\"kestrel-playlist.pls\"><a>T<", {{"T", ""}}},
      // No anchor behind it: the page up to its first tag serves as the title.
      {"Intro<br>1234567kestrel-playlist.pls\">", {{"Intro", "234567kestrel-playlist.pls"}}},
      // Then the one before; and no ">": the link before.
      {"/sbin/kestrel-playlist.pls\"><a>T</a>/sbin/kestrel-playlist.pls",
       {{"T", "/sbin/kestrel-playlist.pls"}, {"T", "/sbin/kestrel-playlist.pls"}}},
      // An anchor that never ends.
      {"x<y/sbin/kestrel-playlist.pls\"><a href", {{"x", "/sbin/kestrel-playlist.pls"}}},
      // No "<" behind the title.
      {"/sbin/kestrel-playlist.pls\"><a>T", {{"", "/sbin/kestrel-playlist.pls"}}},
  };
  for (const auto& [page, expected] : cases) EXPECT_EQ(scanned(page), expected) << page;
}

TEST(Page, APageMadeToExplodeEndsEarly) {
  // Each marker's link and title would be the whole rest: 10^5 times megabytes.
  std::string page;
  for (int i = 0; i < 100'000; ++i) page += "kestrel-playlist.pls";
  page += ">" + std::string(1'000'000, 'x') + "<a>" + std::string(1'000'000, 'y') + "<";
  std::size_t text = 0;
  for (const auto& station : scanPage(page)) text += station.link.size() + station.title.size();
  EXPECT_LE(text, 5 * page.size());
}

using Answer = Query::Answer;

TEST_F(DirectoryTest, APageBecomesMenuAndCacheAndTheCacheTheSameMenu) {
  settings_.maxchar = 12;
  transfer_.answer(row("Exactly 12 c", "1") + row("Thirteen char", "2") + row("a\r\nb", "3"));
  EXPECT_EQ(query_.ladeonline(7, Query::Mode::click, false, url("2")), Answer::done);
  Entries expected = {{"Exactly 12 c", url("1")},
                      {"Thirteen ...", url("2")},
                      {"a  b", url("3")},
                      {"-", "xt"},
                      {"Reload", "reload"}};
  EXPECT_EQ(entries(tree_.subgenre(7)), expected);
  EXPECT_TRUE(tree_.subgenre(7)[1].Checked);
  EXPECT_FALSE(tree_.subgenre(7)[0].Checked);
  EXPECT_EQ(fileText(data("Jazz.dat")), "Exactly 12 c%#$" + url("1") + "\r\nThirteen char%#$" +
                                            url("2") + "\r\na  b%#$" + url("3") + "\r\n");

  lists_.ladeoffline(tree_.subgenre(6), data("Jazz.dat"), StationLists::Kind::genre);
  expected[3].second = "-";
  EXPECT_EQ(entries(tree_.subgenre(6)), expected);
}

TEST_F(DirectoryTest, AShorterPageLeavesNothingOfTheLongerOne) {
  transfer_.answer(row("a", "1") + row("b", "2"));
  transfer_.answer(row("c", "3"));
  EXPECT_EQ(query_.ladeonline(0, Query::Mode::click, false, url("1")), Answer::done);
  EXPECT_EQ(query_.ladeonline(0, Query::Mode::reload, false, url("1")), Answer::done);
  EXPECT_EQ(entries(tree_.subgenre(0)),
            (Entries{{"c", url("3")}, {"-", "xt"}, {"Reload", "reload"}}));
  EXPECT_FALSE(tree_.subgenre(0)[0].Checked) << "the mark was another station's";
  lists_.finishCaches();
  EXPECT_EQ(fileText(data("TopTen.dat")), "c%#$" + url("3") + "\r\n");
}

TEST_F(DirectoryTest, AsksTheDirectoryInItsOwnWords) {
  const std::string path = kHost + std::string("/directory/index.phtml");
  settings_.maxentry = "0035";
  query_.setSearchText("rock & roll");
  const std::tuple<int, int, bool, std::string> cases[] = {
      {7, 0, false, "?sgenre=Jazz&maxbitrate=999&numresult=0035"},
      {7, 3, true, "?s=Jazz&maxbitrate=56&numresult=0035"},
      {16, 5, false, "?sgenre=80s&maxbitrate=999&numresult=0035"},
      {19, 1, true, "?s=rock & roll&maxbitrate=24&numresult=0035"},
  };
  for (const auto& [slot, bitrate, as_search, query] : cases) {
    for (auto& entry : tree_.subbit) entry.Checked = false;
    tree_.subbit[bitrate].Checked = true;
    (void)query_.ladeonline(slot, Query::Mode::click, as_search, {});
    EXPECT_EQ(transfer_.requests.back(), path + query);
  }
}

TEST_F(DirectoryTest, AGenreWithoutStationsIsSearchedForOnceAndTheSearchListNever) {
  putFile(data("Jazz.dat"), "old%#$http://old\r\n");
  for (int i = 0; i < 3; ++i) transfer_.answer("<html>nothing</html>");
  tree_.subgenre(7)[0].Tag = "http://old";
  const Entries before = entries(tree_.subgenre(7));
  EXPECT_EQ(query_.refresh(7, Query::Mode::click, "http://old"), Answer::no_station);
  EXPECT_TRUE(tree_.subgenre(7)[0].Checked) << "the station that plays";
  ASSERT_EQ(transfer_.requests.size(), 2u);
  EXPECT_NE(transfer_.requests[1].find("?s=Jazz&"), std::string::npos);
  EXPECT_EQ(query_.refresh(19, Query::Mode::click, {}), Answer::no_station);
  EXPECT_EQ(transfer_.requests.size(), 3u);
  EXPECT_EQ(entries(tree_.subgenre(7)), before);
  EXPECT_EQ(fileText(data("Jazz.dat")), "old%#$http://old\r\n");
}

TEST_F(DirectoryTest, AFailedQueryIsReportedOnceAndChangesNothing) {
  using Outcome = TransferResult::Outcome;
  for (const Outcome outcome : {Outcome::failed, Outcome::timed_out}) {
    desktop_.messages.clear();
    transfer_.answer(outcome);
    EXPECT_EQ(query_.refresh(7, Query::Mode::click, {}), Answer::failed);
    EXPECT_EQ(desktop_.messages, std::vector{messages_.msgnotonline});
    EXPECT_EQ(query_.lastTransferState(), 11);
    EXPECT_EQ(entries(tree_.subgenre(7)), (Entries{{"Reload", "reload"}}));
  }
}

TEST_F(DirectoryTest, ANewerQueryWinsAndPagesNeverMix) {
  transfer_.answer(row("b", "2"));
  Answer inner = Answer::failed;
  transfer_.while_waiting = [&] { inner = query_.refresh(8, Query::Mode::click, {}); };
  EXPECT_EQ(query_.refresh(7, Query::Mode::click, {}), Answer::superseded);
  EXPECT_EQ(inner, Answer::done);
  EXPECT_TRUE(desktop_.messages.empty());
  EXPECT_EQ(entries(tree_.subgenre(7)), (Entries{{"Reload", "reload"}}));
  EXPECT_EQ(fileText(data("Jazz.dat")), "(no file)");
  EXPECT_EQ(fileText(data("Metal.dat")), "b%#$" + url("2") + "\r\n");
}

TEST_F(DirectoryTest, AMenuIsFilledEvenWhenItsFileCannotBe) {
  app::makeFolder(data("Jazz.dat"));
  transfer_.answer(row("a", "1"));
  EXPECT_EQ(query_.ladeonline(7, Query::Mode::click, false, {}), Answer::done);
  EXPECT_EQ(tree_.subgenre(7)[0].Caption, "a");
}

TEST_F(DirectoryTest, SavesAPlaylistUnderItsExtension) {
  putFile(paths_.inData("\\tmpdata.pls"), "old");
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"http://h/a.pls", "[playlist]\nFile1=x\r\n", "[playlist]\r\nFile1=x\r\r\n\r\n"},
      {"http://h/a.", "", "\r\n"},
      {"http://h/a.M3U", "y", "y\r\n"},
  };
  for (const auto& [address, body, saved] : cases) {
    transfer_.answer(body);
    EXPECT_EQ(query_.ladeplaylist(address), Answer::done);
    EXPECT_EQ(launched_.back(), std::pair(std::string(address), std::string(saved)));
  }
  EXPECT_FALSE(app::fileExists(paths_.inData("\\tmpdata.pls"))) << "at most one is left";
  EXPECT_EQ(icon_.caption, "Kestrel");
}

TEST_F(DirectoryTest, TellsWhyAPlaylistCannotBePlayed) {
  using Outcome = TransferResult::Outcome;
  const std::string bad_entry = "Can't Connect. Error in Datafile";
  putFile(paths_.inData("\\tmpdata.pls"), "old");
  refused_extension_ = "exe";
  const std::tuple<const char*, Outcome, std::string, std::size_t> cases[] = {
      {"", Outcome::failed, bad_entry, 0},
      {"http://h/a.pls", Outcome::timed_out, "Timeout Error", 1},
      {"http://h/a.pls", Outcome::failed, messages_.msgnotonline, 1},
      {"http://h/a.exe", Outcome::failed, bad_entry, 0},
      {"http://h.com/stream", Outcome::failed, messages_.msgnotonline, 0},
      {"http://localhost/stream", Outcome::failed, messages_.msgnotonline, 0},
      {"http://h/a.pls?id=1", Outcome::failed, messages_.msgnotonline, 0},
      {"http://h/a.pls:x", Outcome::failed, messages_.msgnotonline, 0},
      {"http://h/a.exe ", Outcome::failed, messages_.msgnotonline, 0},
  };
  for (const auto& [address, outcome, message, requests] : cases) {
    transfer_.requests.clear();
    desktop_.messages.clear();
    transfer_.answers.clear();
    transfer_.answer(outcome);
    EXPECT_EQ(query_.ladeplaylist(address), Answer::failed);
    EXPECT_EQ(desktop_.messages, std::vector{message}) << address;
    EXPECT_EQ(transfer_.requests.size(), requests) << address;
  }
  EXPECT_TRUE(launched_.empty());
  EXPECT_EQ(fileText(paths_.inData("\\tmpdata.pls")), "old");
}

TEST_F(DirectoryTest, CacheFilesSkipWhatIsNoRecord) {
  const Entries closing = {{"-", "-"}, {"Reload", "reload"}};
  const auto with = [&](Entries stations) {
    stations.insert(stations.end(), closing.begin(), closing.end());
    return stations;
  };
  const std::pair<std::string, Entries> cases[] = {
      {"", {{"Reload", "reload"}}},
      {"x", {{"Reload", "reload"}}},
      {"no record\r\n", with({{"Reload", "reload"}})},
      {"a%#$u\n\nx\n%#$u\nb%#$\nc%#$u%#$v\nd%#$w", with({{"a", "u"}, {"d", "w"}})},
      {std::string("\0\xff%#$\x01\r", 7), with({{std::string("\0\xff", 2), "\x01"}})},
  };
  for (const auto& [text, expected] : cases) {
    MenuArray menu(std::vector{tray::MenuItem{"Reload", "reload"}});
    putFile(data("x.dat"), text);
    lists_.ladeoffline(menu, data("x.dat"), StationLists::Kind::genre);
    EXPECT_EQ(entries(menu), expected) << text;
  }
}

TEST_F(DirectoryTest, StartsFromTheUsersFilesAndThenTheProgramsOnes) {
  putFile(data("Jazz.dat"), "mine%#$u\n");
  putFile(paths_.program_folder + "\\data\\Jazz.dat", "program's%#$u\n");
  putFile(paths_.program_folder + "\\data\\search.dat", "found%#$u\n");
  putFile(paths_.program_folder + "\\data\\favs.dat", std::string(200, 'f') + "%#$u\n");
  lists_.loadAtStart();
  EXPECT_EQ(tree_.subgenre(7)[0].Caption, "mine");
  EXPECT_EQ(entries(tree_.subgenre(19)),
            (Entries{{"found", "u"}, {"-", "-"}, {"New Search", "search"}}));
  EXPECT_EQ(tree_.subfavs[3].Caption, std::string(200, 'f'));
  EXPECT_FALSE(tree_.mgenrespecial.Visible);
}

TEST_F(DirectoryTest, OffersOwnEntriesUpToTheirLastDay) {
  settings_.maxchar = 8;
  putFile(data("special.dat"),
          "today%#$a%#$20250615\nyesterday%#$b%#$20250614\nundated and long%#$c\n"
          "empty date%#$d%#$\nzero%#$e%#$0\nno address%#$\nfour%#$f%#$20200101%#$x\n");
  lists_.specialreloaded();
  const Entries due = {
      {"today", "a"}, {"unda ...", "c"}, {"empt ...", "d"}, {"zero", "e"}, {"four", "f"}};
  EXPECT_EQ(entries(tree_.subspecial), due);
  EXPECT_TRUE(tree_.mgenrespecial.Visible && tree_.specialtrenner.Visible);

  ASSERT_TRUE(lists_.writeAtEnd());
  EXPECT_EQ(fileText(data("special.dat")),
            "today%#$a\r\nunda ...%#$c\r\nempt ...%#$d\r\nzero%#$e\r\nfour%#$f\r\n");
}

TEST_F(DirectoryTest, OwnEntriesThatHaveLeftTheFileLeaveTheMenu) {
  putFile(data("special.dat"), "a%#$u\nb%#$v\n");
  lists_.specialreloaded();
  putFile(data("special.dat"), "");
  lists_.specialreloaded();
  EXPECT_EQ(entries(tree_.subspecial), (Entries{{"leer", ""}}));
  ASSERT_TRUE(app::removeFile(data("special.dat")));
  lists_.specialreloaded();
  EXPECT_FALSE(tree_.mgenrespecial.Visible || tree_.specialtrenner.Visible);
}

TEST_F(DirectoryTest, WithoutExpiryTheOwnEntriesFileIsLeftAlone) {
  putFile(data("special.dat"), "a%#$u%#$20990101\n");
  lists_.specialreloaded();
  ASSERT_TRUE(lists_.writeAtEnd());
  EXPECT_EQ(fileText(data("special.dat")), "a%#$u%#$20990101\n");
}

TEST_F(DirectoryTest, FavouritesTooManyToReadAreKeptAndJoinedByTheNewOnes) {
  const std::string many = std::string(app::kLargestFile + 1, 'x');
  putFile(data("favs.dat"), many);
  lists_.loadAtStart();
  EXPECT_EQ(tree_.subfavs.UBound(), 2);
  tree_.subfavs.load() = {"new", "u"};
  ASSERT_TRUE(lists_.writeAtEnd());
  EXPECT_EQ(fileText(data("favs.dat")), "(no file)") << "still too large to read";
  EXPECT_EQ(app::readWhole(data("favs.dat"), 2 * many.size()), many + "\r\nnew%#$u\r\n");
}

TEST_F(DirectoryTest, WritesFavouritesOnlyWhileThereAreSome) {
  putFile(data("favs.dat"), "a%#$u\nb%#$v\n");
  lists_.loadAtStart();
  tree_.subfavs.load() = {"c\r\nd", "w"};
  ASSERT_TRUE(lists_.writeAtEnd());
  EXPECT_EQ(fileText(data("favs.dat")), "a%#$u\r\nb%#$v\r\nc  d%#$w\r\n");
  tree_.subfavs.unloadAbove(2);
  ASSERT_TRUE(lists_.writeAtEnd());
  EXPECT_EQ(fileText(data("favs.dat")), "a%#$u\r\nb%#$v\r\nc  d%#$w\r\n");
}

}  // namespace
}  // namespace directory
