#ifdef _WIN32
#include <share.h>
#endif

#include <cstdio>
#include <filesystem>

#include "app/file_writer.h"
#include "directory/own_lists.h"
#include "tests/directory_fixture.h"
#include "tests/scarce_memory.h"

// Files as people, other programs and older versions leave them.
namespace directory {
namespace {

constexpr int kJazz = 7;

class ListFilesTest : public DirectoryTest {
 protected:
  const std::vector<std::string> names_ = {"Jazz.dat", "favs.dat", "special.dat"};

  void putAll(std::string_view text) {
    for (const auto& name : names_) putFile(data(name), text);
  }
  static std::filesystem::path path(std::string file) {
    std::replace(file.begin(), file.end(), '\\', '/');
    return file;
  }
  // A page, a new favourite and own entries on their way to all three files.
  bool writeAll() {
    transfer_.answer(row("new", "1"));
    EXPECT_EQ(query_.refresh(kJazz, Query::Mode::reload, {}), Query::Answer::done);
    EXPECT_EQ(tree_.subgenre(kJazz)[0].Caption, "new");
    tree_.subfavs.load() = {"new", "u"};
    const bool specials = lists_.writeSpecials({{"new", "u"}});
    return lists_.writeAtEnd() && specials;
  }
  std::string firstOf(const tray::MenuArray& menu, int index) const {
    return index <= menu.UBound() ? menu[index].Caption : "(none)";
  }
  bool nothingBeside() const {
    for (const auto& name : names_) {
      if (app::fileExists(data(name) + ".new")) return false;
    }
    return true;
  }
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
    putAll(line);
    lists_.loadAtStart();
    EXPECT_EQ(tree_.subgenre(kJazz)[0].Tag != "reload", (readers & genre) != 0) << line;
    EXPECT_EQ(tree_.subfavs.UBound() == 3, (readers & favourite) != 0) << line;
    EXPECT_EQ(!tree_.subspecial[0].Tag.empty(), (readers & special) != 0) << line;
    tree_.subgenre(kJazz)[0].Tag = "reload";
  }
}

TEST_F(ListFilesTest, LineEndsOfAnyKindEndALine) {
  for (const char* end : {"\r\n", "\n", "\r", "\n\n\n", "\r\r\n"}) {
    tree_.subfavs.unloadAbove(2);
    putAll(std::string("a%#$u") + end + "b%#$v");
    lists_.loadAtStart();
    EXPECT_EQ(tree_.subgenre(kJazz).UBound(), 3);
    EXPECT_EQ(organise(tree_, OwnList::favourites),
              (std::vector<OwnEntry>{{"a", "u"}, {"b", "v"}}));
    EXPECT_EQ(tree_.subspecial.UBound(), 1);
  }
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

TEST_F(ListFilesTest, AHundredMegabytesAreLeftAlone) {
  constexpr std::uintmax_t kSize = 100 << 20;
  putAll("");
  for (const auto& name : names_) std::filesystem::resize_file(path(data(name)), kSize);
  lists_.loadAtStart();
  EXPECT_EQ(entries(tree_.subgenre(kJazz)), (Entries{{"Reload", "reload"}}));
  EXPECT_EQ(tree_.subfavs.UBound(), 2);
  EXPECT_EQ(lists_.specials(), std::nullopt);
  EXPECT_FALSE(lists_.writeSpecials({{"new", "u"}}));
  ASSERT_TRUE(lists_.writeAtEnd());
  for (const auto& name : names_) {
    EXPECT_EQ(std::filesystem::file_size(path(data(name))), kSize) << name;
  }
}

TEST_F(ListFilesTest, AFolderInTheFilesPlaceStaysOne) {
  for (const auto& name : names_) {
    app::makeFolder(data(name));
    putFile(data(name) + "\\inside", "x");
    putFile(paths_.program_folder + "\\data\\" + name, "program's%#$u\n");
  }
  lists_.loadAtStart();
  EXPECT_EQ(firstOf(tree_.subgenre(kJazz), 0), "program's");
  EXPECT_EQ(firstOf(tree_.subfavs, 3), "program's");
  EXPECT_EQ(firstOf(tree_.subspecial, 0), "program's");
  EXPECT_FALSE(writeAll());
  for (const auto& name : names_) EXPECT_EQ(fileText(data(name) + "\\inside"), "x");
  EXPECT_TRUE(nothingBeside());
}

// Some systems replace a read-only file and some refuse to.
TEST_F(ListFilesTest, AReadOnlyFileIsOldOrNew) {
  using std::filesystem::perms;
  putAll("old%#$u\r\n");
  for (const auto& name : names_) {
    std::filesystem::permissions(path(data(name)), perms::owner_read | perms::group_read);
  }
  lists_.loadAtStart();
  EXPECT_EQ(firstOf(tree_.subgenre(kJazz), 0), "old");
  const bool written = writeAll();
  EXPECT_EQ(fileText(data("favs.dat")), written ? "old%#$u\r\nnew%#$u\r\n" : "old%#$u\r\n");
  EXPECT_EQ(fileText(data("special.dat")), written ? "new%#$u\r\n" : "old%#$u\r\n");
  EXPECT_TRUE(nothingBeside());
  for (const auto& name : names_) std::filesystem::permissions(path(data(name)), perms::owner_all);
}

TEST_F(ListFilesTest, OneIsWrittenThoughThereIsNoMemoryForAWhile) {
  app::FileWriter writer;
  refuseMemory(3);
  writer.replace(data("Jazz.dat"), "new%#$u\r\n");
  writer.finish();
  EXPECT_EQ(memoryRefusalsLeft(), 0);
  EXPECT_EQ(fileText(data("Jazz.dat")), "new%#$u\r\n");
}

#ifdef _WIN32
TEST_F(ListFilesTest, AFileThatAnotherProgramHoldsIsKeptForIt) {
  putAll("old%#$u\r\n");
  std::vector<std::FILE*> held;
  for (const auto& name : names_) {
    held.push_back(_fsopen(path(data(name)).string().c_str(), "r+b", _SH_DENYRW));
  }
  lists_.loadAtStart();
  EXPECT_EQ(firstOf(tree_.subgenre(kJazz), 0), "Reload");
  EXPECT_EQ(firstOf(tree_.subfavs, 3), "(none)");
  EXPECT_EQ(lists_.specials(), std::nullopt);
  EXPECT_FALSE(writeAll());
  for (std::FILE* file : held) std::fclose(file);
  for (const auto& name : names_) EXPECT_EQ(fileText(data(name)), "old%#$u\r\n") << name;
  EXPECT_TRUE(nothingBeside());

  ASSERT_TRUE(lists_.writeAtEnd()) << "released: the unread favourites and the new one";
  EXPECT_EQ(fileText(data("favs.dat")), "old%#$u\r\nnew%#$u\r\n");
}
#endif

}  // namespace
}  // namespace directory
