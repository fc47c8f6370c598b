#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "player/skinmodule.h"

namespace player {

void PrintTo(const SkinRect& rect, std::ostream* out) {
  *out << "{" << rect.left << ", " << rect.top << ", " << rect.right << ", " << rect.bottom << "}";
}

namespace {

struct Drawn {
  const char* name;
  std::vector<std::string> rows;  ///< one letter for each colour
  std::vector<SkinRect> region;
};

std::vector<std::uint32_t> pixelsOf(const std::vector<std::string>& rows) {
  std::vector<std::uint32_t> pixels;
  for (const std::string& row : rows) {
    for (const char colour : row) pixels.push_back(0x010203U * static_cast<std::uint32_t>(colour));
  }
  return pixels;
}

TEST(RegionFromPicture, UnitesTheRunsOfEachRow) {
  const Drawn shapes[] = {
      {"a block", {".....", ".##..", ".##.."}, {{1, 1, 3, 2}, {1, 2, 3, 3}}},
      {"a column of one pixel", {"...", ".#.", ".#.", "..."}, {{1, 1, 2, 2}, {1, 2, 2, 3}}},
      {"a ring", {".....", ".###.", ".#.#."}, {{1, 1, 4, 2}, {1, 2, 2, 3}, {3, 2, 4, 3}}},
      {"colours are told apart from the key only", {"....", ".ab."}, {{1, 1, 3, 2}}},
      {"the key is the first pixel's colour, whatever it is", {"##..##"}, {{2, 0, 4, 1}}},
      {"the key's colour only", {"...", "..."}, {}},
      // A run that touches the right edge goes on to the next row's first key pixel.
      {"closed in the next row", {"....", "..##", "...."}, {{2, 2, 0, 3}}},
      {"begun in one row, closed further right in the next", {"..##", "###."}, {{2, 1, 3, 2}}},
      {"over a full row", {".#.#", "####", "#..."}, {{1, 0, 2, 1}, {3, 2, 1, 3}}},
      {"never closed", {"..", ".#"}, {}},
      {"all but the first pixel", {".##", "###"}, {}},
      {"nothing", {}, {}},
  };
  for (const Drawn& shape : shapes) {
    const std::size_t width = shape.rows.empty() ? 0 : shape.rows[0].size();
    EXPECT_EQ(shape.region, RegionFromPicture(pixelsOf(shape.rows), width)) << shape.name;
  }
}

TEST(RegionFromPicture, TellsColoursWithoutTheirHighestByte) {
  const std::uint32_t pixels[] = {0xff00ff, 0xffff00ff, 0x00ff00, 0xff00ff};
  EXPECT_EQ((std::vector<SkinRect>{{2, 0, 3, 1}}), RegionFromPicture(pixels, 4));
}

}  // namespace
}  // namespace player
