#include <gtest/gtest.h>
#ifndef _WIN32
#include <sys/resource.h>
#endif

#include <csignal>

#include "app/hosts.h"
#include "app/settings.h"
#include "app/startup.h"
#include "base/text.h"
#include "tests/support/fakes.h"

namespace app {
namespace {

TEST(Text, KnowsNumbersWhateverTheLocale) {
  const std::pair<const char*, std::optional<double>> cases[] = {
      {"5", 5},     {" 5 ", 5},  {"-1", -1},    {"+2", 2},     {"0035", 35}, {"1.5", 1.5},
      {"1,5", 1.5}, {".5", .5},  {"5.", 5},     {"1e2", 100},  {"", {}},     {" ", {}},
      {"-", {}},    {".", {}},   {"e5", {}},    {"1e", {}},    {"abc", {}},  {"1 2", {}},
      {"0x10", {}}, {"inf", {}}, {"1.2.3", {}}, {"1e999", {}}, {"5\t", {}},
  };
  for (const auto& [text, number] : cases) EXPECT_EQ(base::toNumber(text), number) << text;
}

TEST(Text, RoundsToIntegersAndRefusesWhatDoesNotFit) {
  const std::pair<const char*, std::optional<std::int16_t>> cases[] = {
      {"2.5", 2},      {"3.5", 4},         {"-0.4", 0},    {"32767", 32767}, {"32768", {}},
      {"32767.5", {}}, {"-32768", -32768}, {"-32769", {}}, {"1e30", {}},
  };
  for (const auto& [text, number] : cases) EXPECT_EQ(base::toInt16(text), number) << text;
  EXPECT_EQ(base::toInt32("2147483648"), std::nullopt);
}

TEST(Text, CutsTitlesByCharacterAndNeverInsideOne) {
  const std::string umlauts = "\xc3\xa4\xc3\xb6\xc3\xbc\xc3\x9f\xc3\xa9\xc3\xa8";  // 6 characters
  const std::tuple<std::string, int, std::string> cases[] = {
      {"exactly ten", 11, "exactly ten"},
      {"exactly ten", 10, "exactl ..."},
      {umlauts, 6, umlauts},
      {umlauts, 5, "\xc3\xa4 ..."},
      {"\xe4\xf6\xfc\xdf\xe9\xe8", 5, "\xe4 ..."},  // not UTF-8: bytes
      {"\xf0\x9f\x8e\xb5\xf0\x9f\x8e\xb5 notes", 6, "\xf0\x9f\x8e\xb5\xf0\x9f\x8e\xb5 ..."},
      {"\xed\xa0\x80ghijkl", 6, "\xed\xa0 ..."},  // a surrogate is no UTF-8
      {"\xc0\xafghijkl", 6, "\xc0\xaf ..."},
      {"title", 3, " ..."},
      {"title", 0, " ..."},
      {"title", -9, " ..."},
      {"", 0, ""},
  };
  for (const auto& [title, maxchar, cut] : cases)
    EXPECT_EQ(base::cutTitle(title, maxchar), cut) << title;
}

TEST(Files, LinesEndAtCrLfOrBoth) {
  const std::pair<std::string_view, std::vector<std::string>> cases[] = {
      {"", {}},
      {"a", {"a"}},
      {"a\r\nb\nc\rd", {"a", "b", "c", "d"}},
      {"a\r\r\nb\r", {"a", "", "b"}},
      {"\n\n", {"", ""}},
  };
  for (const auto& [text, expected] : cases) {
    std::vector<std::string> found;
    base::Lines lines(text);
    for (std::string_view line; lines.next(line);) found.emplace_back(line);
    EXPECT_EQ(found, expected) << text;
  }
}

TEST(Files, AreReadAndReplacedWholeOrNotAtAll) {
  const TestFolder folder;
  const std::string file = folder.path() + "\\favs.dat", beside = file + ".new";
  putFile(file, "old");
  EXPECT_EQ(base::readWhole(file, 3), "old");
  EXPECT_EQ(base::readWhole(file, 2), std::nullopt) << "too large";
  ASSERT_TRUE(base::makeFolder(beside));
  EXPECT_FALSE(base::replaceFile(file, "new")) << "a folder is where they are written";
  EXPECT_EQ(fileText(file), "old");
#ifndef _WIN32
  std::filesystem::remove(nativePath(beside));
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit usual;
  getrlimit(RLIMIT_FSIZE, &usual);
  for (const rlim_t room : {0, 2}) {  // as on a full disk
    const rlimit limit{room, usual.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    const bool replaced = base::replaceFile(file, "new");
    setrlimit(RLIMIT_FSIZE, &usual);
    EXPECT_FALSE(replaced) << room;
    EXPECT_EQ(fileText(file), "old") << room;
    EXPECT_FALSE(base::fileExists(beside)) << room;
  }
#endif
}

std::string rewritten(std::string_view text) {
  Settings settings;
  menu::MenuTree tree;
  readEarlySettings(text, settings);
  applySettings(text, settings, tree);
  return settingsText(settings, tree);
}

// The written file tells all that was read; each case names the line that differs
// from the defaults.
TEST(Settings, ReadsWhatItCanAndWritesItBack) {
  const std::pair<std::string, std::string> cases[] = {
      {"MaxChar=80", "maxchar=80"},
      {" maxchar=80", ""},
      {"maxchar=70000", ""},
      {"maxentry=0035", "maxentry=0035"},
      {"maxentry=30\r\nmaxentry=abc", ""},
      {"reloadonstartup=0", ""},
      {"reloadonstartup=no", ""},
      {"reloadonstartup=5", "reloadonstartup=1"},
      {"playerpath=C:\\Player\\play.exe -x=1", "playerpath=C:\\Player\\play.exe -x=1"},
      {"playerpath=-", ""},
      {"playerpath=a\r\nplayerpath=", ""},
      {"  # volume=5\r\nvolume=77", "volume=77"},
      {"player=2\nplayer=x", "player=2"},
      {"showsplash=0", "showsplash=0"},
      {"showsplash=2", "showsplash=0"},
      {"showsplash=-1", "showsplash=0"},
      {"showsplash=yes", ""},
      {"showsplash=1,0", ""},
      {"showreloadallwindow=7", "showreloadallwindow=7"},
      {"language=german.kesl", "language=german.kesl"},
      {"language=", ""},
      {"playerwin_left=150,5", "playerwin_left=150.5"},
      {"playerwin_top=-4500", "playerwin_top=-4500"},
      {"playerwin_top=1e30", ""},
      {"bitrate=3", "bitrate=3"},
      {"bitrate=6", ""},
      {"bitrate=", ""},
      {"genre=1;0;True;False;-1;1;1;1;1;1;1;1;1;1;1;1;1;1;1; 0 ",
       "genre=1;0;1;0;1;1;1;1;1;1;1;1;1;1;1;1;1;1;1;0"},
      {"genre=0;0;0", ""},
      {"genre=0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;0;x", ""},
      {"unknown=1\r\nleftmouse=2", "leftmouse=2"},
      {"left", ""},
  };
  const std::string defaults = rewritten("");
  for (const auto& [text, changed] : cases) {
    const std::string written = rewritten(text);
    if (changed.empty()) {
      EXPECT_EQ(written, defaults) << text;
    } else {
      EXPECT_NE(written.find("\r\n" + changed + "\r\n"), written.npos) << text << "\n" << written;
      EXPECT_EQ(rewritten(written), written) << text;
    }
  }
}

TEST(Hosts, TakesWhatIsThereAndDefaultsForTheRest) {
  const TestFolder folder;
  const std::string file = folder.path() + "\\hosts.cfg";
  putFile(file, "#hosts\nDirectory= 127.0.0.1:8000 \nupdate=\n");
  const Hosts hosts = readHosts(file);
  EXPECT_EQ(hosts.directory, "127.0.0.1:8000");
  EXPECT_EQ(hosts.update, Hosts().update);
}

class StartupTest : public testing::Test {
 protected:
  Startup start() { return prepareStartup(folder_.path(), program_ + "\\"); }

  TestFolder folder_;
  std::string program_ = folder_.path() + "\\program";
  std::string kes_ = folder_.path() + "\\ardenware\\kes";
};

TEST_F(StartupTest, OnlyTheFirstStartMakesTheFolders) {
  EXPECT_TRUE(start().firstrun);
  EXPECT_TRUE(base::folderExists(kes_ + "\\data"));
  std::filesystem::remove_all(nativePath(kes_));
  EXPECT_EQ(start().paths.datapath, kes_);
  EXPECT_FALSE(base::folderExists(kes_));
}

TEST_F(StartupTest, SettingsBesideTheProgramCountForTheStartOnly) {
  putFile(program_ + "\\settings.cfg", "showsplash=0\nmaxchar=80\n");
  Startup start = this->start();
  menu::MenuTree tree;
  ladesettings(start.paths, start.settings, tree);
  EXPECT_FALSE(start.firstrun);
  EXPECT_EQ(start.settings.showsplash, 0);
  EXPECT_EQ(start.settings.maxchar, 50);
  ASSERT_TRUE(savesettings(start.paths, start.settings, tree));
  EXPECT_EQ(fileText(kes_ + "\\settings.cfg"), settingsText(start.settings, tree));
}

TEST_F(StartupTest, CopiesTheProgramsLanguageFileAndTakesTheSplashTextFromIt) {
  putFile(program_ + "\\settings.cfg", "language=german.kesl");
  const std::string text = "language:Deutsch\n0001\n0001:Lade: bitte warten#\n0001:later";
  putFile(program_ + "\\lang\\german.kesl", text);
  EXPECT_EQ(start().splash_message, "Lade: bitte warten");
  EXPECT_EQ(fileText(kes_ + "\\lang\\german.kesl"), text);
}

TEST_F(StartupTest, ALanguageThatCannotBeFoundIsEnglish) {
  const std::pair<const char*, const char*> cases[] = {
      {"gone.kesl", "0"}, {"x", "x"}, {"0", "0"}, {"..\\settings.cfg", "0"}};
  putFile(program_ + "\\lang\\other.kesl", "0001:x");
  for (const auto& [language, kept] : cases) {
    putFile(program_ + "\\settings.cfg", std::string("language=") + language);
    EXPECT_EQ(start().settings.language, kept);
  }
}

TEST_F(StartupTest, SettingsThatCouldNotBeReadAreKeptAside) {
  const Paths paths = start().paths;
  putFile(paths.inData("\\settings.cfg"), "volume=1");
  Settings settings;
  settings.unread = true;
  ASSERT_TRUE(savesettings(paths, settings, menu::MenuTree()));
  EXPECT_EQ(fileText(paths.inData("\\settings.cfg.old")), "volume=1");
}

}  // namespace
}  // namespace app
