#include <gtest/gtest.h>

#include "dialogs/settings_rules.h"
#include "tests/support/temporary_folder.h"

namespace dialogs {
namespace {

// What the field shows after the picture was held down for a long time.
std::string hold(std::string text, Spin spin) {
  for (int steps = 0; steps < 1000; ++steps) {
    const auto next = spinStep(text, spin);
    if (!next) return text;
    text = *next;
    if (!spinGoesOn(text, spin)) return text;
  }
  return "endless";
}

TEST(SpinPictures, GoOnToTheirLimitAndMakeOneStepBeyondIt) {
  const std::tuple<const char*, Spin, const char*, const char*> cases[] = {
      {"50", kImage1, "51", "100"},         {"99", kImage1, "100", "100"},
      {"100", kImage1, "100", "100"},       {"150", kImage1, "151", "151"},
      {"50", kImage2, "49", "20"},          {"21", kImage2, "20", "20"},
      {"20", kImage2, "20", "20"},          {"5", kImage2, "4", "4"},
      {"50", kImage4, "51", "100"},         {"50", kImage3, "49", "40"},
      {"40", kImage3, "40", "40"},          {"abc", kImage1, "abc", "abc"},
      {"1e300", kImage1, "1e300", "1e300"}, {"2147483647", kImage1, "2147483648", "2147483648"},
  };
  for (const auto& [text, spin, clicked, held] : cases) {
    EXPECT_EQ(spinStep(text, spin).value_or(text), clicked) << text;
    EXPECT_EQ(hold(text, spin), held) << text;
  }
}

TEST(MouseButtons, OneAlwaysOpensTheMainMenu) {
  EXPECT_EQ(chooseLeft({0, 2}, 1), (MouseButtons{1, 0}));
  EXPECT_EQ(chooseLeft({1, 2}, 0), (MouseButtons{0, 2}));
  EXPECT_EQ(chooseRight({1, 0}, 2), (MouseButtons{0, 2}));
  EXPECT_EQ(chooseRight({1, 2}, 0), (MouseButtons{1, 0}));
}

class SettingsDialog : public testing::Test {
 protected:
  void apply() { applysettings(form_, settings_, tree_); }

  app::Settings settings_;
  menu::MenuTree tree_;
  SettingsForm form_ = settingsForm(settings_, tree_);
};

TEST_F(SettingsDialog, LeavesWhatMakesNoSenseAsItWas) {
  settings_.player = 7;
  settings_.leftmouse = 9;
  form_ = settingsForm(settings_, tree_);
  EXPECT_EQ(form_.Option1, -1);
  EXPECT_EQ(form_.mouse.left, -1);
  form_.Text1 = "many";
  form_.Text2 = "99999";
  apply();
  EXPECT_EQ(settings_.maxentry, "20");
  EXPECT_EQ(settings_.maxchar, 50);
  EXPECT_EQ(settings_.player, 7);
  EXPECT_EQ(settings_.leftmouse, 9);
}

TEST_F(SettingsDialog, TakesAPlayerWhoseFirstPieceIsAFile) {
  TestFolder folder;
  const std::string player = folder.path() + "\\play.exe";
  const std::string spaced = folder.path() + "\\play it.exe";
  folder.put("play.exe");
  folder.put("play it.exe");
  const std::pair<std::string, int> cases[] = {
      {player, 1},
      {player + " /play %1", 1},
      {"  " + player, 1},
      {'"' + player + '"', 1},
      {'"' + player + "\" \"%1\"", 0},  // a quote stays on the first piece
      {'"' + player + "\" %1", 0},
      {spaced, 0},  // tested as far as the blank
      {folder.path() + "\\other.exe", 0},
      {folder.path(), 0},
      {"", 0},
      {" ", 0},
      {"\"", 0},
  };
  for (const auto& [command, expected] : cases) {
    form_.Option1 = 1;
    form_.Text3 = command;
    apply();
    EXPECT_EQ(settings_.player, expected) << command;
    EXPECT_EQ(settings_.playerpath, command);
  }
}

}  // namespace
}  // namespace dialogs
