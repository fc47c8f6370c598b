#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "app/files.h"
#include "app/language.h"
#include "app/sprachmod.h"

namespace app {
namespace {

namespace fs = std::filesystem;

/// A data and a program folder, and everything that a language can name.
class LanguageFolders : public testing::Test {
 protected:
  LanguageFolders() {
    fs::remove_all(root_);
    fs::create_directories(root_ / "data");
    fs::create_directories(root_ / "program" / "lang");
  }
  ~LanguageFolders() override { fs::remove_all(root_); }

  void put(const std::string& place, const std::string& text) const {
    fs::create_directories((root_ / place).parent_path());
    std::ofstream(root_ / place, std::ios::binary) << text;
  }
  std::string get(const std::string& place) const {
    std::ostringstream text;
    text << std::ifstream(root_ / place, std::ios::binary).rdbuf();
    return text.str();
  }
  void load(const std::string& text) {
    put("data/lang/test.kesl", text);
    loadlanguage("test.kesl", paths_, texts_);
  }
  const std::string& caption(const char* key) const { return captions_.get(key); }

  const fs::path root_ = fs::path(testing::TempDir()) / "kestrel-language";
  const Paths paths_{(root_ / "data").string(), (root_ / "program").string()};
  tray::MenuTree tree_;
  Captions captions_;
  Messages messages_;
  const Texts texts_{tree_, captions_, messages_};
};

TEST_F(LanguageFolders, ALineReplacesATextByTheRulesOfTheFile) {
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

TEST_F(LanguageFolders, ATextReachesEachOfItsPlaces) {
  tree_.subgenre(4).load() = {"One", "http://one"};
  tree_.subgenre(4).load() = {"Reload", "reload"};
  tree_.subgenre(19).load() = {"Two", "http://two"};
  load(
      "1003:a\n1021:b\n1022:c\n1038:d\n1039:e\n2003:f\n2017:g\n2040:h\n3003:i\\nj\\Nk\n4002:%t l\n"
      "2043:m\n1032:n\n5001:o");
  EXPECT_EQ(tree_.mgenre[0].Caption, "a");
  EXPECT_EQ(tree_.mgenre[18].Caption, "b");
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
  EXPECT_EQ(tree_.subbit[5].Caption + tree_.subfavs[1].Caption, "no");
  EXPECT_EQ(caption("Form2.Check1"), "Show Splashscreen") << "left out, so it stays";
}

TEST_F(LanguageFolders, TheUsersFileGoesBeforeTheProgramsAndOnlyHisNamesItsAuthor) {
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

TEST_F(LanguageFolders, WhatIsNoLanguageFileChangesNothing) {
  put("data/lang/0", "1002:x");
  put("data/settings.cfg", "1002:x");
  put("data/lang/large.kesl", "1002:x\n" + std::string(kLargestLanguageFile, '#'));
  fs::create_directories(root_ / "data/lang/folder.kesl");
  for (const char* name : {"", "0", "x", "gone.kesl", "..\\settings.cfg", "../settings.cfg",
                           "large.kesl", "folder.kesl"}) {
    loadlanguage(name, paths_, texts_);
    EXPECT_EQ(tree_.genremenu.Caption, "Genres") << name;
  }
}

TEST_F(LanguageFolders, TheChoosersListTheUsersFilesThatTellTheirName) {
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

TEST_F(LanguageFolders, ShippedLanguagesAreCopiedButNeverOverTheUsersOwn) {
  copyShippedLanguages(paths_);
  EXPECT_FALSE(fs::exists(root_ / "data/lang")) << "nothing to copy";
  put("program/lang/a.kesl", "language:A");
  put("program/lang/b.kesl", "language:B");
  put("program/lang/readme.txt", "x");
  put("data/lang/b.kesl", "language:mine");
  copyShippedLanguages(paths_);
  EXPECT_EQ(get("data/lang/a.kesl"), "language:A");
  EXPECT_EQ(get("data/lang/b.kesl"), "language:mine");
  EXPECT_FALSE(fs::exists(root_ / "data/lang/readme.txt"));
}

TEST_F(LanguageFolders, AChosenFileTellsItsAuthorAndTheChoosersTexts) {
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
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"", {}},
      {"  ", {}},
      {"\"\"", {}},
      {"a  b ", {"a", "b"}},
      {"\"C:\\p.exe\"", {"C:\\p.exe"}},
      {"\"p\" \"%1\"", {"p\"", "\"%1"}},
      {"\"p\" %1", {"\"p\"", "%1"}},
      {"\"", {"\""}},
  };
  for (const auto& [text, expected] : cases) {
    std::vector<std::string> parts{"old"};
    EXPECT_EQ(splitclean(text, " ", parts), static_cast<int>(expected.size())) << text;
    EXPECT_EQ(parts, expected) << text;
  }
  std::vector<std::string> parts;
  EXPECT_EQ(splitclean(" a ;; b;c ", ";", parts), 3);
  EXPECT_EQ(parts, (std::vector<std::string>{"a", "b", "c"}));
}

// --- the files that are shipped

std::set<std::string> everyId() {
  std::set<std::string> ids{"language", "author", "2009", "2014"};
  constexpr int kRanges[][2] = {{1, 4},       {1002, 1048}, {2001, 2008},
                                {2016, 2034}, {2040, 2050}, {3001, 3004},
                                {4001, 4004}, {5001, 5003}, {6005, 6007}};
  for (const auto& [first, last] : kRanges) {
    for (int id = first; id <= last; ++id) {
      char text[8];
      std::snprintf(text, sizeof(text), "%04d", id);
      ids.insert(text);
    }
  }
  return ids;
}

bool isUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i++]);
    const int more = lead < 0x80 ? 0 : lead < 0xC2 ? -1 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : -1;
    if (more < 0) return false;  // no language here needs four bytes
    for (int k = 0; k < more; ++k, ++i) {
      if (i >= text.size() || (static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) return false;
    }
  }
  return true;
}

int count(std::string_view text, std::string_view part) {
  int found = 0;
  for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++found;
  return found;
}

class ShippedLanguage : public testing::TestWithParam<const char*> {
 protected:
  ShippedLanguage() {
    std::ostringstream text;
    text << std::ifstream(fs::path(KESTREL_LANG) / (std::string(GetParam()) + ".kesl"),
                          std::ios::binary)
                .rdbuf();
    file_ = text.str();
  }
  std::string file_;
};

TEST_P(ShippedLanguage, HasEachIdOnceAndLosesNothingToTheCleaner) {
  std::set<std::string> missing = everyId();
  std::size_t entries = 0, cleaned = 0;
  Lines lines(file_);
  for (std::string_view line; lines.next(line);) {
    if (!isLanguageLine(line)) continue;
    EXPECT_EQ(cleanline(line), line);
    ++entries;
  }
  LanguageEntries all(file_);
  for (std::string id, text; all.next(id, text); ++cleaned) {
    EXPECT_EQ(missing.erase(id), 1u) << "unknown or twice: " << id;
    EXPECT_FALSE(text.empty()) << id;
  }
  EXPECT_EQ(entries, cleaned);
  EXPECT_EQ(missing, std::set<std::string>());
}

TEST_P(ShippedLanguage, KeepsWhatTheProgramPutsIn) {
  EXPECT_TRUE(isUtf8(file_));
  EXPECT_EQ(count(file_, "\n"), count(file_, "\r\n"));
  EXPECT_TRUE(file_.ends_with("\r\n"));
  LanguageEntries entries(file_);
  for (std::string id, text; entries.next(id, text);) {
    EXPECT_EQ(count(text, "%t"), id == "4002" ? 1 : 0) << id;
    EXPECT_EQ(count(text, "\"%1\""), id == "2024" ? 1 : 0) << id;
    EXPECT_EQ(count(text, "\\n"), id == "3003" ? 4 : id == "0003" ? 1 : 0) << id;
    EXPECT_EQ(count(text, "&"), 0) << id;
    EXPECT_EQ(count(text, "(the Kestrel project)"), id == "3003" ? 1 : 0) << id;
    EXPECT_EQ(text == "the Kestrel project", id == "author") << id;
  }
}

// An id that stands for nothing would leave the English text: every text must change
// when each id is replaced by itself.
TEST(StringIds, NoTextOfTheProgramIsOutOfReach) {
  tray::MenuTree tree;
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
  const tray::Popup::Kind kPopups[] = {tray::Popup::Kind::mainmenu, tray::Popup::Kind::genremenu,
                                       tray::Popup::Kind::mnuplayer, tray::Popup::Kind::mnubitrate,
                                       tray::Popup::Kind::subfavs};
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

INSTANTIATE_TEST_SUITE_P(Languages, ShippedLanguage,
                         testing::Values("dutch", "french", "german", "italian", "polish",
                                         "portuguese", "russian", "spanish", "swedish", "turkish"),
                         [](const auto& language) { return std::string(language.param); });

}  // namespace
}  // namespace app
