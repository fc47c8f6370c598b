#include <gtest/gtest.h>

#include "directory/marker_search.h"
#include "directory/page.h"
#include "tests/directory/fixture.h"

namespace directory {
namespace {

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

TEST(Page, TakesLinkAndTitleAsTheyStandAndThePreviousOnesForThoseThatAreBroken) {
  const std::pair<std::string, Entries> cases[] = {
      {"<html>" + row(" Caf&eacute; %#$ ", "1") + row("", "2"),
       {{" Caf&eacute; %#$ ", "/sbin/kestrel-playlist.pls?rn=1&file=filename.pls"},
        {"", "/sbin/kestrel-playlist.pls?rn=2&file=filename.pls"}}},
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
  EXPECT_EQ(query_.ladeonline(7, Query::Mode::click, false, url("1")), Answer::done);
  Entries expected = {{"Exactly 12 c", url("1")},
                      {"Thirteen ...", url("2")},
                      {"a  b", url("3")},
                      {"-", "xt"},
                      {"Reload", "reload"}};
  EXPECT_EQ(entries(tree_.subgenre(7)), expected);
  EXPECT_TRUE(tree_.subgenre(7)[0].Checked);
  EXPECT_FALSE(tree_.subgenre(7)[1].Checked);
  EXPECT_EQ(fileText(data("Jazz.dat")), "Exactly 12 c%#$" + url("1") + "\r\nThirteen char%#$" +
                                            url("2") + "\r\na  b%#$" + url("3") + "\r\n");

  lists_.ladeoffline(tree_.subgenre(6), data("Jazz.dat"), StationLists::Kind::genre);
  expected[3].second = "-";
  EXPECT_EQ(entries(tree_.subgenre(6)), expected);

  transfer_.answer(row("c", "9"));  // nothing of the longer page stays
  EXPECT_EQ(query_.ladeonline(7, Query::Mode::reload, false, url("1")), Answer::done);
  EXPECT_EQ(entries(tree_.subgenre(7)),
            (Entries{{"c", url("9")}, {"-", "xt"}, {"Reload", "reload"}}));
  EXPECT_FALSE(tree_.subgenre(7)[0].Checked) << "the mark was another station's";
  lists_.finishCaches();
  EXPECT_EQ(fileText(data("Jazz.dat")), "c%#$" + url("9") + "\r\n");
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
  tree_.subgenre(7)[0].Tag = "http://old";
  for (int i = 0; i < 3; ++i) transfer_.answer("<html>nothing</html>");
  EXPECT_EQ(query_.refresh(7, Query::Mode::click, "http://old"), Answer::no_station);
  ASSERT_EQ(transfer_.requests.size(), 2u);
  EXPECT_NE(transfer_.requests[1].find("?s=Jazz&"), std::string::npos);
  EXPECT_EQ(entries(tree_.subgenre(7)), (Entries{{"Reload", "http://old"}}));
  EXPECT_TRUE(tree_.subgenre(7)[0].Checked) << "the station that plays";
  EXPECT_EQ(fileText(data("Jazz.dat")), "(no file)");
  EXPECT_EQ(query_.refresh(19, Query::Mode::click, {}), Answer::no_station);
  EXPECT_EQ(transfer_.requests.size(), 3u);
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
  EXPECT_EQ(query_.lastTransferState(), 12);
  EXPECT_FALSE(base::fileExists(paths_.inData("\\tmpdata.pls"))) << "at most one is left";
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
    transfer_.answers = {{outcome, {}}};
    EXPECT_EQ(query_.ladeplaylist(address), Answer::failed);
    EXPECT_EQ(desktop_.messages, std::vector{message}) << address;
    EXPECT_EQ(transfer_.requests.size(), requests) << address;
    EXPECT_EQ(query_.lastTransferState(), *address == '\0' ? 0 : 11) << address;
  }
  EXPECT_TRUE(launched_.empty());
  EXPECT_EQ(fileText(paths_.inData("\\tmpdata.pls")), "old");
}

}  // namespace
}  // namespace directory
