#pragma once

#include <windows.h>

#include "window/dpi.h"

namespace player {

/// Where the player window's parts stand, in pixels of the client area.
struct PlayerLayout {
  SIZE window;
  RECT Image1, Image2;
  RECT lblName;
  RECT song;      ///< of lblSong and lbstation, one of which shows
  RECT progress;  ///< how far the buffer is
  RECT lblBPS, lblFormat;
  RECT chkSave;
  RECT volume;  ///< the loudspeaker beside the slider
  RECT Slider1;
  RECT subontop, submini, hide;
  double scale;  ///< pixels in a unit of 1/96 inch

  /// The whole window, or (`mini`) one line with what has an empty rectangle left
  /// out.
  static PlayerLayout of(window::Dpi dpi, bool mini);
};

}  // namespace player
