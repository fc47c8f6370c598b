#pragma once

#include <windows.h>

namespace window {

/// The colours of the frameless windows.
struct Theme {
  COLORREF background;
  COLORREF halo;     ///< rings round the play button
  COLORREF surface;  ///< buttons and the slider's channel
  COLORREF border;
  COLORREF text;
  COLORREF muted;
  COLORREF accent;  ///< what plays, fills and has the focus
  COLORREF on_accent;
  COLORREF record;
  bool high_contrast;

  /// Dark slate with the kestrel's rust; the system's own colours while the user
  /// has asked for high contrast.
  static Theme current();
};

}  // namespace window
