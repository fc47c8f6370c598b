#ifdef _WIN32
#include <share.h>
#endif

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "base/file_writer.h"
#include "directory/own_lists.h"
#include "tests/directory/fixture.h"

namespace {

std::atomic<int> refusals = 0;     // so many of the next allocations fail
thread_local bool spared = false;  // but not in this thread

}  // namespace

void* operator new(std::size_t size) {
  const bool refused = !spared && refusals > 0 && refusals-- > 0;
  void* const memory = refused ? nullptr : std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

// Files as people, other programs and older versions leave them.
namespace directory {
namespace {

constexpr int kJazz = 7, kMetal = 8;

class ListFilesTest : public DirectoryTest {
 protected:
  using Strings = std::vector<std::string>;

  void putAll(std::string_view text) {
    for (const auto& name : names_) putFile(data(name), text);
  }
  // Of genre, favourites and own entries.
  Strings firstTitles() const {
    const bool favourites = tree_.subfavs.UBound() >= kFirstFavourite;
    return {tree_.subgenre(kJazz)[0].Caption,
            favourites ? tree_.subfavs[kFirstFavourite].Caption : "(none)",
            tree_.subspecial[0].Caption};
  }
  // A page, a new favourite and own entries on their way to all three files.
  bool writeAll() {
    transfer_.answer(row("new", "1"));
    EXPECT_EQ(query_.refresh(kJazz, Query::Mode::reload, {}), Query::Answer::done);
    EXPECT_EQ(tree_.subgenre(kJazz)[0].Caption, "new");
    tree_.subfavs.load() = {"new", "u"};
    const bool specials = lists_.writeSpecials({{"new", "u"}});
    const bool written = lists_.writeAtEnd() && specials;
    for (const auto& name : names_) EXPECT_FALSE(base::fileExists(data(name) + ".new")) << name;
    return written;
  }

  const Strings names_ = {"Jazz.dat", "favs.dat", "special.dat"};
};

TEST_F(ListFilesTest, ALineIsReadByWhoeverKnowsItsFields) {
  constexpr auto genre = 1, favourite = 2, special = 4, all = 7;
  const std::pair<const char*, int> cases[] = {
      {"t%#$u", all},
      {" %#$ ", all},
      {"t%#$http://h/%20#$", all},
      {"t%#%#$u", all},
      {"M\xfcnchen%#$\xe4", all},
      {"M\xc3\xbcnchen%#$\xc3\xa4", all},
      {"\xef\xbb\xbft%#$u", all},
      {"t%#$u%#$20250615", special},
      {"t%#$u%#$20250614", 0},
      {"t%#$u%#$99999999", special},
      {"t%#$u%#$soon", special},
      {"t%#$u%#$", special},
      {"t%#$u%#$0", special},
      {"t%#$u%#$20250614%#$", special},
      {"%#$", 0},
      {"%#$%#$", 0},
      {"%#$t%#$u", 0},
      {"t%#$%#$20990101", 0},
      {"t%#$", 0},
      {"%#$u", 0},
      {"t%# $u", 0},
      {"t\t#$u", 0},
  };
  for (const auto& [line, readers] : cases) {
    tree_.subfavs.unloadAbove(2);
    tree_.subgenre(kJazz)[0].Tag = "reload";
    putAll(line);
    lists_.loadAtStart();
    EXPECT_EQ(tree_.subgenre(kJazz)[0].Tag != "reload", (readers & genre) != 0) << line;
    EXPECT_EQ(tree_.subfavs.UBound() == 3, (readers & favourite) != 0) << line;
    EXPECT_EQ(!tree_.subspecial[0].Tag.empty(), (readers & special) != 0) << line;
  }
}

TEST_F(ListFilesTest, TheUsersListsComeBeforeTheProgramsAndOnlyTheirTitlesAreCut) {
  settings_.maxchar = 8;
  putAll("a%#$u\r\n\nno\rb%#$v\n" + std::string("\0\xff%#$\x01\r", 7) + "longer than that%#$w");
  putFile(programs("Jazz.dat"), "program's%#$u\n");
  putFile(programs("search.dat"), "found%#$u\n");
  putFile(data("Metal.dat"), "x");  // too short for a list
  lists_.loadAtStart();
  Entries expected = {
      {"a", "u"}, {"b", "v"}, {std::string("\0\xff", 2), "\x01"}, {"long ...", "w"}};
  EXPECT_EQ(entries(tree_.subspecial), expected);
  expected.insert(expected.end(), {{"-", "-"}, {"Reload", "reload"}});
  EXPECT_EQ(entries(tree_.subgenre(kJazz)), expected);
  EXPECT_EQ(entries(tree_.subgenre(kMetal)), (Entries{{"Reload", "reload"}}));
  EXPECT_EQ(entries(tree_.subgenre(menu::kSearchGenre)),
            (Entries{{"found", "u"}, {"-", "-"}, {"New Search", "search"}}));
  EXPECT_EQ(organise(tree_, OwnList::favourites).back(), (OwnEntry{"longer than that", "w"}));
}

TEST_F(ListFilesTest, TwoHundredThousandRecordsAreReadAndWrittenBack) {
  std::string text;
  for (int i = 0; i < 200'000; ++i) {
    text += "Station " + std::to_string(i) + "%#$http://h/" + std::to_string(i) + ".pls\r\n";
  }
  putAll(text);
  lists_.loadAtStart();
  EXPECT_EQ(tree_.subgenre(kJazz).UBound(), 200'001);
  EXPECT_EQ(tree_.subspecial.UBound(), 199'999);
  tree_.subfavs.load() = {"new", "u"};
  ASSERT_TRUE(lists_.writeAtEnd());
  EXPECT_TRUE(fileText(data("favs.dat")) == text + "new%#$u\r\n");

  const auto before = organise(tree_, OwnList::favourites);
  auto after = before;
  after.erase(after.begin() + 100'000);
  reorganise(tree_, OwnList::favourites, before, after);
  EXPECT_TRUE(organise(tree_, OwnList::favourites) == after);
}

TEST_F(ListFilesTest, WhatIsTooLargeToReadIsKept) {
  const std::string many(base::kLargestFile + 1, 'x');
  const auto whole = [&](const char* name) { return base::readWhole(data(name), 2 * many.size()); };
  putAll(many);
  putFile(data("special.dat"), "over%#$b%#$20200101\nmine%#$c\n");
  lists_.loadAtStart();
  EXPECT_EQ(firstTitles(), (Strings{"Reload", "(none)", "mine"}));
  putFile(data("special.dat"), many);
  lists_.specialreloaded();
  EXPECT_EQ(tree_.subspecial[0].Caption, "mine") << "better than none";
  EXPECT_EQ(lists_.specials(), std::nullopt);
  EXPECT_FALSE(lists_.writeSpecials({{"new", "u"}}));
  tree_.subfavs.load() = {"new", "u"};
  ASSERT_TRUE(lists_.writeAtEnd());
  EXPECT_TRUE(whole("Jazz.dat") == many);
  EXPECT_TRUE(whole("favs.dat") == many + "\r\nnew%#$u\r\n");
  EXPECT_TRUE(whole("special.dat") == many);

  putFile(data("special.dat"), "over%#$b%#$20200101\nback%#$d\n");
  lists_.specialreloaded();
  ASSERT_TRUE(lists_.writeAtEnd());
  EXPECT_EQ(fileText(data("special.dat")), "back%#$d\r\n");
}

TEST_F(ListFilesTest, AFolderInTheFilesPlaceStaysOne) {
  for (const auto& name : names_) {
    putFile(data(name) + "\\inside", "x");
    putFile(programs(name), "program's%#$u\n");
  }
  lists_.loadAtStart();
  EXPECT_EQ(firstTitles(), Strings(3, "program's"));
  EXPECT_FALSE(writeAll());
  for (const auto& name : names_) EXPECT_EQ(fileText(data(name) + "\\inside"), "x");
}

TEST_F(ListFilesTest, OneIsWrittenThoughThereIsNoMemoryForAWhile) {
  base::FileWriter writer;
  spared = true;
  refusals = 3;
  writer.replace(data("Jazz.dat"), "new%#$u\r\n");
  writer.finish();
  EXPECT_EQ(refusals, 0);
  EXPECT_EQ(fileText(data("Jazz.dat")), "new%#$u\r\n");
}

#ifdef _WIN32
TEST_F(ListFilesTest, AFileThatAnotherProgramHoldsIsKeptForIt) {
  putAll("old%#$u\r\n");
  std::vector<std::FILE*> held;
  for (const auto& name : names_) {
    held.push_back(_fsopen(nativePath(data(name)).string().c_str(), "r+b", _SH_DENYRW));
  }
  lists_.loadAtStart();
  EXPECT_EQ(firstTitles(), (Strings{"Reload", "(none)", "leer"}));
  EXPECT_EQ(lists_.specials(), std::nullopt);
  EXPECT_FALSE(writeAll());
  for (std::FILE* file : held) std::fclose(file);
  for (const auto& name : names_) EXPECT_EQ(fileText(data(name)), "old%#$u\r\n") << name;

  ASSERT_TRUE(lists_.writeAtEnd()) << "released: the unread favourites and the new one";
  EXPECT_EQ(fileText(data("favs.dat")), "old%#$u\r\nnew%#$u\r\n");
}
#endif

}  // namespace
}  // namespace directory
