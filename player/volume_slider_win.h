#pragma once

#include <windows.h>

#include <functional>
#include <optional>

#include "player/volume.h"
#include "window/canvas.h"
#include "window/theme.h"

namespace player {

/// The trackbar `Slider1`, which both of the player's windows have: it shows and
/// sets the volume, jumps to where it is clicked, and is painted in the windows'
/// colours. Its parent hands it the trackbar's own messages.
class VolumeSlider {
 public:
  using Background = std::function<void(window::Canvas&)>;

  explicit VolumeSlider(Volume& volume) : volume_(volume) {}

  /// `background` paints what is below the slider, in the parent's coordinates.
  void attach(HWND trackbar, Background background);
  void setLook(const window::Theme& theme, double scale);

  /// Whether the focus is marked.
  void showFocus(bool show) { show_focus_ = show; }

  [[nodiscard]] HWND handle() const { return trackbar_; }
  /// Takes the volume over from whoever changed it.
  void follow(int volume) const;

  /// WM_HSCROLL of the parent.
  void scrolled() const;
  /// Painting, jumping; nothing for the rest.
  std::optional<LRESULT> onControl(UINT message, WPARAM wparam, LPARAM lparam) const;

  /// The keys and the wheel change the volume wherever the focus is. False: not a
  /// key of the volume.
  static bool key(Volume& volume, WPARAM key);
  static void wheel(Volume& volume, WPARAM wparam);

 private:
  void paint() const;
  void jumpTo(int x) const;
  [[nodiscard]] RECT channel() const;

  Volume& volume_;
  HWND trackbar_ = nullptr;
  Background background_;
  window::Theme theme_ = window::Theme::current();
  double scale_ = 1;
  bool show_focus_ = false;
};

}  // namespace player
