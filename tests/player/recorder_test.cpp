#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <optional>
#include <string>
#include <thread>

#include "base/files.h"
#include "player/record_name.h"
#include "player/recorder.h"
#include "tests/support/temporary_folder.h"

namespace {

using namespace std::string_literals;

TEST(RecordName, NeverLeavesTheFolderNorNamesADevice) {
  const std::pair<std::string, std::string> cases[] = {
      {"A - B", "R\\A - B.mp3"},
      {"AC/DC: T.N.T.", "R\\ACDC T.N.T..mp3"},
      {"..\\..\\x", "R\\....x.mp3"},
      {"C:/autoexec", "R\\Cautoexec.mp3"},
      {"a?b*c|d<e>f\"g", "R\\abcdefg.mp3"},
      {"Song . ", "R\\Song . .mp3"},
      {"Comet", "R\\Comet.mp3"},
      {"Console", "R\\Console.mp3"},
      {"Привет", "R\\Привет.mp3"},
      // These are not recorded.
      {"tab\tand\nline", ""},
      {"con", ""},
      {"NUL .x", ""},
      {"C/om1", ""},
      {"LPT\u00b2", ""},
      {"", ""},
      {"  ", ""},
      {"???", ""},
  };
  for (const auto& [title, path] : cases) EXPECT_EQ(player::recordPath("R", title), path) << title;
}

class RecorderTest : public testing::Test {
 protected:
  RecorderTest() {
    recorder.recordflag = true;
    recorder.begin();
  }

  void bytes(std::string_view text) {
    recorder.bytes({reinterpret_cast<const std::byte*>(text.data()), text.size()});
  }
  [[nodiscard]] std::string recorded(const std::string& title) const {
    return base::readWhole(folder.path() + "\\" + title + ".mp3").value_or("(no file)");
  }

  TestFolder folder;
  player::Recorder recorder{folder.path()};
};

constexpr std::string_view kBlock = "xx\xff\xfb\x90yy";
const std::string kRecorded = "\xff\xfb\x90xx\xff\xfb\x90yy";

TEST_F(RecorderTest, BeginsAFileWithItsFirstHeader) {
  recorder.title("T");
  bytes("no header");
  bytes("\xff\xfb\x90 only at the start");
  bytes("with a checksum \xff\xfa\x90");
  bytes("half \xff");
  EXPECT_EQ(recorded("T"), "");
  bytes(kBlock);
  bytes("more");
  EXPECT_EQ(recorded("T"), kRecorded + "more");
}

TEST_F(RecorderTest, TakesAHeaderWhoseThirdByteIsStillToCome) {
  recorder.title("T");
  bytes("x\xff\xfb");
  EXPECT_EQ(recorded("T"), std::string("\xff\xfb\0x\xff\xfb", 6));
}

TEST_F(RecorderTest, WritesWhatBelongsToTheTitleAndNothingElse) {
  const struct {
    const char* what;
    std::function<void()> then;               ///< once "T" is being recorded
    std::string file = kRecorded;             ///< of "T"
    std::optional<std::string> another = {};  ///< of "U"
  } cases[] = {
      {"the same title", [&] { recorder.title("T"), bytes("more"); }, kRecorded + "more"},
      {"another title", [&] { recorder.title("U"), bytes("no header"), bytes(kBlock); }, kRecorded,
       kRecorded},
      {"no title", [&] { recorder.title(""), bytes(kBlock); }},
      {"switched off", [&] { recorder.recordflag = false, bytes("unwanted"); }},
      {"switched off and on: a new file that needs no header",
       [&] {
         recorder.recordflag = false, bytes("unwanted");
         recorder.recordflag = true, bytes("more");
       },
       "more"},
      {"the end", [&] { recorder.end(), recorder.title("U"), bytes(kBlock); }},
      {"the end of the download", [&] { recorder.downloadEnded(), bytes(kBlock), bytes("x"); }},
      {"the same title after a stop",
       [&] { recorder.end(), recorder.begin(), recorder.title("T"), bytes("more"); },
       kRecorded + "more"},
      {"the next station has no title yet",
       [&] { recorder.end(), recorder.begin(), bytes(kBlock), bytes(kBlock); }},
  };
  bytes(kBlock);
  EXPECT_EQ(folder.files(), 0) << "there is no title";
  for (const auto& each : cases) {
    for (const char* old : {"T.mp3", "U.mp3"}) folder.remove(old);
    recorder.recordflag = true;
    recorder.begin();
    recorder.title("before");
    recorder.title("T");
    bytes(kBlock);
    each.then();
    recorder.end();
    EXPECT_EQ(recorded("T"), each.file) << each.what;
    EXPECT_EQ(recorded("U"), each.another.value_or("(no file)")) << each.what;
    EXPECT_EQ(folder.files(), each.another ? 2 : 1) << each.what;
  }
}

TEST_F(RecorderTest, LeavesOutWhatIsNoPlainFileOrCannotBeOne) {
  const std::string start = folder.path() + "/";
  folder.put("precious");
  base::makeFolder(folder.path() + "\\folder.mp3");
  ASSERT_EQ(0, ::symlink("precious", (start + "link.mp3").c_str()));
  ASSERT_EQ(0, ::symlink("nothing", (start + "dangling.mp3").c_str()));
  ASSERT_EQ(0, ::mkfifo((start + "pipe.mp3").c_str(), 0600));
  const long before = folder.files();
  for (const std::string& title :
       {"folder"s, "link"s, "dangling"s, "pipe"s, std::string(10'000, 'x'), "nul"s}) {
    recorder.title(title);
    bytes(kBlock);
  }
  EXPECT_EQ(folder.files(), before);
  EXPECT_EQ(base::readWhole(folder.path() + "\\precious"), "x");
  recorder.title("U");
  bytes(kBlock);
  EXPECT_EQ(recorded("U"), kRecorded);
}

TEST_F(RecorderTest, TakesTitlesWhileBytesAreWritten) {
  std::jthread titles([this] {
    for (int i = 0; i < 200; ++i) recorder.title(std::to_string(i % 7));
  });
  for (int i = 0; i < 200; ++i) bytes(kBlock);
  titles.join();
  for (int i = 0; i < 7; ++i) {
    const std::string file = recorded(std::to_string(i));
    EXPECT_TRUE(file == "(no file)" || file.empty() || file.starts_with(kRecorded)) << file;
  }
}

}  // namespace
