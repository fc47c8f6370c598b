#include "player/player_layout_win.h"

namespace player {
namespace {

/// Sizes in units of 1/96 inch: left, top, width, height.
struct Units {
  int x, y, width, height;
};

RECT pixels(window::Dpi dpi, const Units& units) {
  return {dpi.scale(units.x), dpi.scale(units.y), dpi.scale(units.x + units.width),
          dpi.scale(units.y + units.height)};
}

PlayerLayout whole(window::Dpi dpi) {
  const auto at = [dpi](int x, int y, int width, int height) {
    return pixels(dpi, {x, y, width, height});
  };
  return {.window = {dpi.scale(400), dpi.scale(150)},
          .Image1 = at(18, 26, 60, 60),
          .Image2 = at(84, 38, 36, 36),
          .lblName = at(136, 32, 250, 24),
          .song = at(136, 57, 250, 20),
          .progress = at(136, 82, 250, 3),
          .lblBPS = at(136, 90, 184, 16),
          .lblFormat = at(320, 90, 66, 16),
          .chkSave = at(18, 114, 104, 24),
          .volume = at(134, 116, 20, 20),
          .Slider1 = at(158, 114, 232, 24),
          .subontop = at(312, 5, 26, 26),
          .submini = at(340, 5, 26, 26),
          .hide = at(368, 5, 26, 26),
          .scale = dpi.value() / 96.0};
}

PlayerLayout oneLine(window::Dpi dpi) {
  const auto at = [dpi](int x, int y, int width, int height) {
    return pixels(dpi, {x, y, width, height});
  };
  return {.window = {dpi.scale(384), dpi.scale(42)},
          .Image1 = at(6, 5, 32, 32),
          .Image2 = at(41, 7, 28, 28),
          .lblName = {},
          .song = at(78, 11, 194, 20),
          .progress = at(78, 34, 194, 3),
          .lblBPS = {},
          .lblFormat = {},
          .chkSave = at(276, 8, 26, 26),
          .volume = {},
          .Slider1 = {},
          .subontop = at(302, 8, 26, 26),
          .submini = at(328, 8, 26, 26),
          .hide = at(354, 8, 26, 26),
          .scale = dpi.value() / 96.0};
}

}  // namespace

PlayerLayout PlayerLayout::of(window::Dpi dpi, bool mini) {
  return mini ? oneLine(dpi) : whole(dpi);
}

}  // namespace player
