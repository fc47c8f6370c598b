#include "player/skinmodule.h"

namespace player {
namespace {

constexpr std::uint32_t kColour = 0xffffff;

}  // namespace

std::vector<SkinRect> RegionFromPicture(std::span<const std::uint32_t> pixels, std::size_t width) {
  std::vector<SkinRect> region;
  if (pixels.empty() || width == 0) return region;
  const std::uint32_t key = pixels[0] & kColour;
  bool in_run = false;  // also from one row into the next
  int start = 0;
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    const bool opaque = (pixels[i] & kColour) != key;
    if (opaque == in_run) continue;
    in_run = opaque;
    const int x = static_cast<int>(i % width);
    const int y = static_cast<int>(i / width);
    if (opaque)
      start = x;
    else
      region.push_back({start, y, x, y + 1});
  }
  return region;
}

}  // namespace player
