#include "app/language_file.h"

#include <gtest/gtest.h>

#include <set>

#include "app/language_loader.h"
#include "tests/support/fakes.h"

namespace app {
namespace {

/// A data and a program folder, and everything that a language can name.
class LanguageTest : public testing::Test {
 protected:
  void put(const std::string& place, std::string_view text) const {
    putFile(folder_.path() + '/' + place, text);
  }
  std::string get(const std::string& place) const { return fileText(folder_.path() + '/' + place); }
  void load(const std::string& text) {
    put("data/lang/test.kesl", text);
    loadlanguage("test.kesl", paths_, texts_);
  }
  const std::string& caption(const char* key) const { return captions_.get(key); }

  const TestFolder folder_;
  const Paths paths_{folder_.path() + "/data", folder_.path() + "/program"};
  menu::MenuTree tree_;
  Captions captions_;
  Messages messages_;
  const Texts texts_{tree_, captions_, messages_};
};

TEST_F(LanguageTest, ALineReplacesATextByTheRulesOfTheFile) {
  const std::string kLong(kLongestLanguageLine, 'x');
  const std::pair<std::string, const char*> cases[] = {
      {"1002:Genres #note", "Genres"},
      {"1002:Rock'n'Roll", "Rock"},
      {"1002:A#B'C", "A#B"},
      {"1002:a\tb\t", "ab"},
      {"  1002:a:b ", "a:b"},
      {"1002: a", " a"},
      {"1002:", ""},
      {"1002:first\n1002:second", "second"},
      {"\xEF\xBB\xBF"
       "1002:marked",
       "marked"},
      {std::string("1002:a\0b", 8), "a b"},
      {"1002 :spaced", "Genres"},
      {"1002", "Genres"},
      {"1002\r\n:x", "Genres"},
      {"#1002:x", "Genres"},
      {"01002:x\n9999:x\n:x\nx", "Genres"},
      {"1002:-", "Genres"},
      {"1002:" + kLong, "Genres"},
  };
  for (const auto& [file, expected] : cases) {
    tree_.genremenu.Caption = "Genres";
    load(file);
    EXPECT_EQ(tree_.genremenu.Caption, expected) << file;
  }
}

TEST_F(LanguageTest, ATextReachesEachOfItsPlaces) {
  tree_.subgenre(4).load() = {"One", "http://one"};
  tree_.subgenre(4).load() = {"Reload", "reload"};
  tree_.subgenre(19).load() = {"Two", "http://two"};
  load("1022:c\n1038:d\n1039:e\n2003:f\n2017:g\n2040:h\n3003:i\\nj\\Nk\n4002:%t l\n2043:m");
  EXPECT_EQ(tree_.subgenre(0)[0].Caption, "c");
  EXPECT_NE(tree_.subgenre(4)[0].Caption, "c") << "only the highest";
  EXPECT_EQ(tree_.subgenre(4)[2].Caption, "c");
  EXPECT_EQ(messages_.reload, "c");
  EXPECT_EQ(tree_.mgenre[19].Caption + caption("searchform.Label3"), "dd");
  EXPECT_EQ(tree_.subgenre(19)[0].Caption + messages_.msgnewsearch, "ee");
  EXPECT_EQ(tree_.subgenre(19)[1].Caption, "Two");
  for (const char* key : {"Form2.Command4", "editfavs.Command3", "Form5.Command2", "Form6.Command2",
                          "searchform.Label5"}) {
    EXPECT_EQ(caption(key), "f") << key;
  }
  EXPECT_EQ(caption("Form2.Frame2") + caption("Form2.List2(2)"), "gg");
  EXPECT_EQ(caption("Form2.Frame6") + caption("Form2.List2(4)"), "hh");
  EXPECT_EQ(caption("Form3.Text1"), "i\r\nj\\Nk");
  EXPECT_EQ(messages_.msgloading, "%t l");
  EXPECT_EQ(caption("Form2.Combo1(2)") + caption("Form2.Combo2(2)"), "mm");
  EXPECT_EQ(caption("Form2.Check1"), "Show Splashscreen") << "left out, so it stays";
}

TEST_F(LanguageTest, TheUsersFileGoesBeforeTheProgramsAndOnlyHisNamesItsAuthor) {
  captions_.set("Form2.Label2", "before");
  put("program/lang/a.kesl", "1002:program\n2009:By\nauthor:P");
  loadlanguage("a.kesl", paths_, texts_);
  EXPECT_EQ(tree_.genremenu.Caption, "program");
  EXPECT_EQ(caption("Form2.Label2"), "before");
  put("data/lang/a.kesl", "1002:data\nauthor:D");
  loadlanguage("a.kesl", paths_, texts_);
  EXPECT_EQ(tree_.genremenu.Caption, "data");
  EXPECT_EQ(caption("Form2.Label2"), ": D");
}

TEST_F(LanguageTest, WhatIsNoLanguageFileChangesNothing) {
  put("data/lang/0", "1002:x");
  put("data/settings.cfg", "1002:x");
  put("data/lang/large.kesl", "1002:x\n" + std::string(kLargestLanguageFile, '#'));
  put("data/lang/folder.kesl/inside", "1002:x");
  for (const char* name : {"", "0", "x", "gone.kesl", "..\\settings.cfg", "../settings.cfg",
                           "large.kesl", "folder.kesl"}) {
    loadlanguage(name, paths_, texts_);
    EXPECT_EQ(tree_.genremenu.Caption, "Genres") << name;
  }
}

TEST_F(LanguageTest, TheChoosersListTheUsersFilesThatTellTheirName) {
  EXPECT_EQ(languages(paths_).size(), 1u);
  put("data/lang/b.KESL", "#x\nlanguage:Zwei\nlanguage:Drei");
  put("data/lang/A.kesl", "1002:x\n language : no\nlanguage:Eins # x");
  put("data/lang/none.kesl", "author:me");
  put("data/lang/c.txt", "language:Text");
  put("program/lang/p.kesl", "language:Program");
  std::string listed;
  for (const auto& [key, text] : languages(paths_)) listed += key + '=' + text + ';';
  EXPECT_EQ(listed, "build=English (Build in);A.kesl=Eins;b.KESL=Zwei;");
}

TEST_F(LanguageTest, ShippedLanguagesAreCopiedButNeverOverTheUsersOwn) {
  put("data/settings.cfg", "");
  copyShippedLanguages(paths_);
  EXPECT_FALSE(base::folderExists(paths_.inData("\\lang"))) << "nothing to copy";
  put("program/lang/a.kesl", "language:A");
  put("program/lang/b.kesl", "language:B");
  put("program/lang/readme.txt", "x");
  put("data/lang/b.kesl", "language:mine");
  copyShippedLanguages(paths_);
  EXPECT_EQ(get("data/lang/a.kesl"), "language:A");
  EXPECT_EQ(get("data/lang/b.kesl"), "language:mine");
  EXPECT_EQ(get("data/lang/readme.txt"), "(no file)");
}

TEST_F(LanguageTest, AChosenFileTellsItsAuthorAndTheChoosersTexts) {
  put("data/lang/full.kesl", "2009:Autor\nauthor:Me\n0002:a\n0003:b\\nc\n0004:d");
  put("data/lang/bare.kesl", "0003:b");
  put("data/lang/build", "author:trap");
  EXPECT_EQ(readlangheader(paths_, "full.kesl"), "Autor: Me");
  EXPECT_EQ(readlangheader(paths_, "bare.kesl"), "Author: unknow");
  for (const char* key : {"build", "gone.kesl"}) {
    EXPECT_EQ(readlangheader(paths_, key), "Please Restart the Program!") << key;
  }
  const auto full = readChooserTexts(paths_, "full.kesl");
  ASSERT_TRUE(full);
  EXPECT_EQ(*full->frame1 + '|' + *full->label1 + '|' + *full->frame2, "a|b\r\nc|d");
  const auto bare = readChooserTexts(paths_, "bare.kesl");
  ASSERT_TRUE(bare);
  EXPECT_FALSE(bare->frame1 || bare->frame2);
  EXPECT_FALSE(readChooserTexts(paths_, "gone.kesl"));
}

TEST(Splitclean, DropsQuotesAroundAllAndEmptyPieces) {
  const std::tuple<const char*, const char*, std::vector<std::string>> cases[] = {
      {"", " ", {}},
      {"  ", " ", {}},
      {"\"\"", " ", {}},
      {"a  b ", " ", {"a", "b"}},
      {" a ;; b;c ", ";", {"a", "b", "c"}},
      {"\"C:\\p.exe\"", " ", {"C:\\p.exe"}},
      {"\"p\" \"%1\"", " ", {"p\"", "\"%1"}},
      {"\"p\" %1", " ", {"\"p\"", "%1"}},
      {"\"", " ", {"\""}},
  };
  for (const auto& [text, separator, expected] : cases) {
    std::vector<std::string> parts{"old"};
    EXPECT_EQ(splitclean(text, separator, parts), static_cast<int>(expected.size())) << text;
    EXPECT_EQ(parts, expected) << text;
  }
}

// --- the files that are shipped

std::set<std::string> everyId() {
  std::set<std::string> ids{"language", "author", "2009", "2014"};
  constexpr int kRanges[][2] = {{1, 4},       {1002, 1048}, {2001, 2008},
                                {2016, 2034}, {2040, 2050}, {3001, 3004},
                                {4001, 4004}, {5001, 5003}, {6005, 6007}};
  for (const auto& [first, last] : kRanges) {
    for (int id = first; id <= last; ++id) {
      const std::string digits = std::to_string(id);
      ids.insert(std::string(4 - digits.size(), '0') + digits);
    }
  }
  return ids;
}

int count(std::string_view text, std::string_view part) {
  int found = 0;
  for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++found;
  return found;
}

TEST(ShippedLanguages, HaveEachIdOnceAndKeepWhatTheProgramPutsIn) {
  int found = 0;
  for (const auto& shipped : std::filesystem::directory_iterator(KESTREL_LANG)) {
    if (shipped.path().extension() != ".kesl") continue;
    ++found;
    SCOPED_TRACE(shipped.path());
    const std::string file = fileText(shipped.path().string());
    EXPECT_EQ(count(file, "\n"), count(file, "\r\n"));
    EXPECT_TRUE(file.ends_with("\r\n"));
    std::set<std::string> missing = everyId();
    base::Lines lines(file);
    for (std::string_view line; lines.next(line);) {
      if (!isLanguageLine(line)) continue;
      std::string id, text;
      EXPECT_TRUE(LanguageEntries(line).next(id, text)) << line;
      EXPECT_EQ(id + ':' + text, line) << "the cleaner takes something away";
      EXPECT_EQ(missing.erase(id), 1u) << "unknown or twice: " << id;
      EXPECT_FALSE(text.empty()) << id;
      EXPECT_EQ(count(text, "%t"), id == "4002" ? 1 : 0) << id;
      EXPECT_EQ(count(text, "\"%1\""), id == "2024" ? 1 : 0) << id;
      EXPECT_EQ(count(text, "\\n"), id == "3003" ? 4 : id == "0003" ? 1 : 0) << id;
      EXPECT_EQ(count(text, "&"), 0) << id;
      EXPECT_EQ(count(text, "(the Kestrel project)"), id == "3003" ? 1 : 0) << id;
      EXPECT_EQ(text == "the Kestrel project", id == "author") << id;
    }
    EXPECT_EQ(missing, std::set<std::string>());
  }
  EXPECT_GE(found, 10);
}

// An id that stands for nothing would leave the English text: every text must change
// when each id is replaced by itself.
TEST(StringIds, NoTextOfTheProgramIsOutOfReach) {
  menu::MenuTree tree;
  Captions captions;
  Messages messages;
  for (const std::string& id : everyId()) replaceText(id, id, {tree, captions, messages});
  const std::set<std::string>
      kElsewhere = {"splash.Label1",     "Form4.Caption", "Form4.Frame1",   "Form4.Label1",
                    "Form4.Frame2",      "Form4.Label2",  "Form4.Command1", "Form2.Label2",
                    "Form2.ListView1(1)"};  // names, an address, and what the early readers set
  for (const auto& [key, english] : englishCaptions()) {
    EXPECT_EQ(captions.get(key) == english, kElsewhere.contains(key)) << key;
  }
  const menu::Popup::Kind kPopups[] = {menu::Popup::Kind::mainmenu, menu::Popup::Kind::genremenu,
                                       menu::Popup::Kind::mnuplayer, menu::Popup::Kind::mnubitrate,
                                       menu::Popup::Kind::subfavs};
  for (const auto kind : kPopups) {
    for (const auto& line : tree.lines({kind})) {
      if (line.item->isSeparator()) continue;
      EXPECT_TRUE(everyId().contains(line.item->Caption)) << line.item->Caption;
    }
  }
  for (const auto* message : {&messages.msgnotonline, &messages.msgnewsearch, &messages.msgstream,
                              &messages.msgdelentry, &messages.msgloading, &messages.msgreloadabort,
                              &messages.msgplayerstatus, &messages.reload}) {
    EXPECT_TRUE(everyId().contains(*message)) << *message;
  }
}

}  // namespace
}  // namespace app
