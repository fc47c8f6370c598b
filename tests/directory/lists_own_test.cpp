#include "directory/own_lists.h"
#include "tests/directory/fixture.h"

namespace directory {
namespace {

using Rows = std::vector<OwnEntry>;

class OwnListsTest : public DirectoryTest {
 protected:
  void load(const Rows& rows, OwnList list) {
    menu::MenuArray& menu = menuOf(list);
    menu.unloadAbove(list == OwnList::favourites ? 2 : 0);
    for (const OwnEntry& row : rows) {
      const bool first = list == OwnList::specials && &row == &rows.front();
      (first ? menu[0] : menu.load()) = {row.title, row.url};
    }
  }
  menu::MenuArray& menuOf(OwnList list) {
    return list == OwnList::favourites ? tree_.subfavs : tree_.subspecial;
  }
  bool shown() const {
    EXPECT_EQ(tree_.mgenrespecial.Visible, tree_.specialtrenner.Visible);
    return tree_.mgenrespecial.Visible;
  }
  // As a new start of the program would have it.
  Rows favouritesNextTime() {
    menu::MenuTree tree;
    StationLists(paths_, settings_, messages_, tree, "20250615").loadAtStart();
    return organise(tree, OwnList::favourites);
  }
};

TEST_F(OwnListsTest, TheOrganiserMakesTheMenuWhatIsLeft) {
  const OwnEntry a{"a", "u"}, b{"b", "v"}, same_title{"a", "w"};
  const Rows all = {a, b, same_title, a};
  const std::pair<Rows, Rows> cases[] = {{all, all},       {{a, b}, {b, a}}, {all, {same_title, a}},
                                         {all, {a, b, a}}, {all, {}},        {{}, {}}};
  for (const OwnList list : {OwnList::favourites, OwnList::specials}) {
    for (const auto& [before, after] : cases) {
      load(before, list);
      EXPECT_EQ(organise(tree_, list), before);
      reorganise(tree_, list, before, after);
      EXPECT_EQ(organise(tree_, list), after);
      for (const auto& item : menuOf(list)) EXPECT_TRUE(item.Visible);
    }
    EXPECT_EQ(organise(tree_, list), Rows{});
  }
  EXPECT_EQ(tree_.subfavs[1].Caption, "Organize Favorites");
  EXPECT_EQ(entries(tree_.subspecial), (Entries{{"leer", ""}}));
}

TEST_F(OwnListsTest, WhatHappensToTheMenuMeanwhileOutlivesTheOrganiser) {
  const Rows before = {{"a", "u"}, {"b", "v"}, {"c", "w"}};
  load(before, OwnList::favourites);
  tree_.subfavs[4].Checked = true;
  tree_.subfavs.load() = {"a", "u"};  // added once more
  tree_.subfavs.load() = {"new", "x"};
  reorganise(tree_, OwnList::favourites, before, {before[2], before[1]});
  EXPECT_EQ(organise(tree_, OwnList::favourites),
            (Rows{{"c", "w"}, {"b", "v"}, {"a", "u"}, {"new", "x"}}));
  EXPECT_TRUE(tree_.subfavs[4].Checked) << "the station still plays";
  EXPECT_FALSE(tree_.subfavs[3].Checked);

  load(before, OwnList::specials);
  putFile(data("special.dat"), "b%#$v\nnew%#$x\n");  // by another program
  lists_.specialreloaded();
  reorganise(tree_, OwnList::specials, before, {before[0], before[1]});
  EXPECT_EQ(organise(tree_, OwnList::specials), (Rows{{"b", "v"}, {"new", "x"}}));
}

TEST_F(OwnListsTest, OwnEntriesAreOfferedUpToTheirLastDayAndThenLeaveTheFile) {
  settings_.maxchar = 8;
  putFile(data("special.dat"),
          "today%#$a%#$20250615\nyesterday%#$b%#$20250614\nundated and long%#$c\n");
  lists_.specialreloaded();
  EXPECT_EQ(entries(tree_.subspecial), (Entries{{"today", "a"}, {"unda ...", "c"}}));
  EXPECT_TRUE(shown());
  EXPECT_EQ(lists_.specials(), (Rows{{"today", "a"}, {"undated and long", "c"}}))
      << "the page shows titles in full, or the next OK would cut them";
  ASSERT_TRUE(lists_.writeAtEnd());
  EXPECT_EQ(fileText(data("special.dat")), "today%#$a\r\nunda ...%#$c\r\n");
}

TEST_F(OwnListsTest, TheMenuOfOwnEntriesIsWhatItsFileIs) {
  EXPECT_EQ(lists_.specials(), Rows{});
  ASSERT_TRUE(lists_.writeSpecials({}));
  EXPECT_FALSE(base::fileExists(data("special.dat"))) << "an empty file would show a menu";
  EXPECT_FALSE(shown());
  ASSERT_TRUE(lists_.writeSpecials({{"b", "u"}, {"a", "v"}}));
  EXPECT_EQ(fileText(data("special.dat")), "b%#$u\r\na%#$v\r\n");
  EXPECT_EQ(entries(tree_.subspecial), (Entries{{"b", "u"}, {"a", "v"}}));
  EXPECT_TRUE(shown() && tree_.mgenrespecial.Enabled);

  const std::string dated = "a%#$u%#$20990101\n";
  putFile(data("special.dat"), dated);
  lists_.specialreloaded();
  ASSERT_TRUE(lists_.writeAtEnd());
  EXPECT_EQ(fileText(data("special.dat")), dated) << "nothing has expired";

  ASSERT_TRUE(base::removeFile(data("special.dat")));
  lists_.specialreloaded();
  EXPECT_FALSE(shown());
  putFile(programs("special.dat"), "program's%#$u\n");
  EXPECT_EQ(lists_.specials(), (Rows{{"program's", "u"}}));
  ASSERT_TRUE(lists_.writeSpecials({}));
  EXPECT_EQ(fileText(data("special.dat")), "") << "or the program's would come back";
  EXPECT_EQ(entries(tree_.subspecial), (Entries{{"leer", ""}}));
}

TEST_F(OwnListsTest, FavouritesAreWrittenOnlyWhileThereAreSome) {
  putFile(data("favs.dat"), "a%#$u\n");
  ASSERT_TRUE(lists_.writeAtEnd());
  EXPECT_EQ(fileText(data("favs.dat")), "a%#$u\n");
}

TEST_F(OwnListsTest, TypedTextKeepsItsEntryWhatItMayBe) {
  const std::tuple<std::string, std::string, std::string, std::string> cases[] = {
      {"a%#$b", "u", "a%# $b", "u"},
      {"a", "http://h/%#$x%#$", "a", "http://h/%25#$x%25#$"},
      {"%#$", "%#$", "%# $", "%25#$"},
      {"%#%#$$", "%%#$#$", "%#%# $$", "%%25#$#$"},
      {"a%#", "$u", "a%#", "$u"},
      {"a%", "#$u", "a%", "#$u"},
      {"a\r\nb\n", "u\rv", "a  b ", "u v"},
      {"\r", "\n", " ", " "},
      {"M\xc3\xbcnchen", "h\xc3\xa4", "M\xc3\xbcnchen", "h\xc3\xa4"},
      {"M\xfcnchen", "h\xe4", "M\xfcnchen", "h\xe4"},
      {std::string("a\0b", 3), "\x1a", "a b", "\x1a"},
  };
  for (const auto& [title, address, kept_title, kept_address] : cases) {
    const Rows kept = {{kept_title, kept_address}, {"next", "n"}};
    ASSERT_TRUE(lists_.writeSpecials({{title, address}, {"next", "n"}}));
    EXPECT_EQ(lists_.specials(), kept);
    EXPECT_EQ(organise(tree_, OwnList::specials), kept);

    load({{title, address}, {"next", "n"}}, OwnList::favourites);
    ASSERT_TRUE(lists_.writeAtEnd());
    EXPECT_EQ(favouritesNextTime(), kept);
  }
}

}  // namespace
}  // namespace directory
