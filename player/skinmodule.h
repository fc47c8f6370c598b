#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace player {

/// A piece of a window's outline, in pixels. `right` may lie left of `left`: the
/// piece then reaches from the one to the other all the same.
struct SkinRect {
  int left, top, right, bottom;

  friend bool operator==(const SkinRect&, const SkinRect&) = default;
};

/// The pieces, each one pixel high, whose union is the outline of a window with
/// this picture as its skin: all but what has the colour of the first pixel.
/// `pixels` are rows of `width` from the top, 0xRRGGBB; the highest byte does not
/// count. None without a pixel of another colour before one of that colour.
///
/// A run of pixels that reaches the right edge is closed only by the next row's
/// first pixel of the key colour, in that row: a skin ends in a column of key colour.
[[nodiscard]] std::vector<SkinRect> RegionFromPicture(std::span<const std::uint32_t> pixels,
                                                      std::size_t width);

}  // namespace player
