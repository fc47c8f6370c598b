#pragma once

#include <windows.h>

#include <string>

#include "base/unique_handle_win.h"
#include "player/player_layout_win.h"
#include "window/canvas.h"
#include "window/dpi.h"
#include "window/theme.h"

namespace player {

/// How a control is being used, as it is painted.
struct ControlLook {
  bool pressed = false;
  bool hot = false;    ///< the pointer is over it
  bool focus = false;  ///< and the keyboard is in use
  bool on = false;     ///< plays, records, is pinned
};

/// The player window's look: colours, fonts and pictures of one density, and what
/// is painted with them. Everything is in the window's client coordinates.
class PlayerSkin {
 public:
  PlayerSkin(window::Dpi dpi, bool mini);

  [[nodiscard]] const PlayerLayout& layout() const { return layout_; }
  [[nodiscard]] const window::Theme& theme() const { return theme_; }

  /// The window's ground; `percent` of the buffer is filled, negative while none is.
  void background(window::Canvas& canvas, int percent, bool playing) const;

  void play(window::Canvas& canvas, const ControlLook& look) const;
  void stop(window::Canvas& canvas, const ControlLook& look) const;
  void record(window::Canvas& canvas, const ControlLook& look, const std::wstring& caption) const;
  void pin(window::Canvas& canvas, const ControlLook& look) const;
  void mini(window::Canvas& canvas, const ControlLook& look) const;
  void hide(window::Canvas& canvas, const ControlLook& look) const;

  enum class Label { name, song, detail };
  void label(window::Canvas& canvas, Label label, const RECT& area, const std::wstring& text,
             bool right_aligned = false) const;
  /// True if the text is wider than its area.
  [[nodiscard]] bool isCut(Label label, const RECT& area, const std::wstring& text) const;

 private:
  void smallButton(window::Canvas& canvas, const RECT& area, const ControlLook& look) const;
  void focusRing(window::Canvas& canvas, const RECT& area, double radius) const;
  /// In the middle of an area.
  void picture(window::Canvas& canvas, const base::UniqueBitmap& picture, const RECT& area) const;
  [[nodiscard]] HFONT font(Label label) const;

  window::Theme theme_;
  PlayerLayout layout_;
  bool mini_;
  base::UniqueFont name_font_, song_font_, detail_font_;
  base::UniqueBitmap play_, stop_, record_off_, record_on_, volume_, pin_, close_;
};

}  // namespace player
