// What listeners read on the player, from what servers put into title blocks.
#include <gtest/gtest.h>

#include "engine/text/title.h"
#include "engine/text/utf8.h"
#include "player/title_tag.h"

namespace {

using namespace std::string_literals;

std::optional<std::string> shownFor(const std::string& text, size_t padding = 5) {
  const auto tag = engine::titleTag(text + std::string(padding, '\0'));
  if (!tag) return std::nullopt;
  return std::string(player::titleOf(*tag).value_or("(no title)"));
}

TEST(Title, IsShownWholeWhateverTheServerMakesOfIt) {
  const std::string semicolon = "\xcd\xbe";
  const struct {
    std::string block, shown;
  } cases[] = {
      {"StreamTitle='A - B';", "A - B"},
      {"StreamTitle='A - B';StreamUrl='http://x/?a;b';", "A - B"},
      {"StreamTitle='';StreamUrl='';", ""},
      // Quotes and semicolons inside: no quoting exists.
      {"StreamTitle='Rock 'n' Roll';StreamUrl='';", "Rock 'n' Roll"},
      {"StreamTitle='Guns N' Roses - Don't Cry';", "Guns N' Roses - Don't Cry"},
      {"StreamTitle=''';StreamUrl='';", "'"},
      {"StreamTitle='One; Two;Three';StreamUrl='';",
       "One" + semicolon + " Two" + semicolon + "Three"},
      {"StreamTitle='Girls';Boys';StreamUrl='';", "Girls'" + semicolon + "Boys"},
      {"StreamTitle='a';b';", "a'" + semicolon + "b"},
      {"StreamTitle='A=B';adw_ad='true';durationMilliseconds='0';", "A=B"},
      // Missing and other signs.
      {"StreamTitle='A - B'", "A - B"},
      {"StreamTitle='A - B'StreamUrl='x'", "A - B"},
      {"StreamTitle='A - B' ; StreamUrl='x'", "A - B"},
      {"StreamTitle='A - B';StreamUrl=http://x;", "A - B"},
      {"StreamTitle='A - B;", "A - B"},
      {"StreamTitle='A - B", "A - B"},
      {"StreamTitle=\"A - \"B\"\";StreamUrl=\"\";", "A - \"B\""},
      {"StreamTitle=A - B;StreamUrl='';", "A - B"},
      {"StreamTitle=A - B", "A - B"},
      {"STREAMTITLE='A - B';", "A - B"},
      {"StreamUrl='x';StreamTitle='A - B';", "A - B"},
      {"StreamTitle=' A\r\n\tB ';", "A   B"},
      // The end of the block came too early.
      {"StreamTitle='A - B';Strea", "A - B"},
      {"StreamTitle='A - B';StreamUrl='http://", "A - B"},
      // 8-bit text stays as it is, unless it must change.
      {"StreamTitle='CAF\xc9';", "CAF\xc9"},
      {"StreamTitle='Bj\xf6rk \x97 J\xf3ga; live';",
       "Bj\xc3\xb6rk \xe2\x80\x94 J\xc3\xb3ga" + semicolon + " live"},
      {"StreamTitle='Bj\xc3\xb6rk; J\xc3\xb3ga';", "Bj\xc3\xb6rk" + semicolon + " J\xc3\xb3ga"},
      // Cut within a character by who made the title.
      {"StreamTitle='Bj\xc3\xb6rk - J\xc3';", "Bj\xc3\xb6rk - J"},
      {"StreamTitle='\xe6\x97\xa5\xe6\x9c';", "\xe6\x97\xa5"},
      {"StreamTitle='A\xf0\x9f\x8e';", "A"},
  };
  for (const auto& each : cases) EXPECT_EQ(each.shown, shownFor(each.block)) << each.block;
}

TEST(Title, LosesAHalfCharacterWhereTheBlockWasFull) {
  EXPECT_EQ("A - J", shownFor("StreamTitle='A - J\xc3", 0));
  EXPECT_EQ("A - J\xc3", shownFor("StreamTitle='A - J\xc3", 1));
}

TEST(Title, IsNotMadeOutOfOtherFields) {
  for (const char* block : {"StreamUrl='http://x/';", "Title='x';", "", "xStreamTitle='A';"}) {
    EXPECT_EQ(std::nullopt, shownFor(block)) << block;
  }
}

TEST(Title, OfAnyLengthEndsWithAWholeCharacter) {
  std::string endless = "x";
  for (int i = 0; i < 5000; ++i) endless += "\xc3\xb6";
  const std::string tag = engine::titleTagOf(endless);
  const auto shown = player::titleOf(tag);
  EXPECT_TRUE(engine::isUtf8(*shown));
  EXPECT_EQ(255 * 16 - 1, shown->size());
}

TEST(Utf8, IsMadeFromTheTextOfOldTags) {
  EXPECT_EQ("\xe2\x82\xac\xc3\xbf\xc2\x81", engine::utf8FromWindows1252("\x80\xff\x81"));
  EXPECT_EQ("A\xf0\x9f\x8e\xb5", engine::utf8FromUtf16("\xff\xfe\x41\0\x3c\xd8\xb5\xdf"s, true));
  EXPECT_EQ("\xef\xbf\xbdz", engine::utf8FromUtf16("\xd8\x3c\0z!"s, true));
  for (const char* bad : {"\xc0\x80", "\xed\xa0\x80", "\xf4\x90\x80\x80", "\xe2\x82", "\x80"}) {
    EXPECT_FALSE(engine::isUtf8(bad)) << bad;
  }
}

}  // namespace
