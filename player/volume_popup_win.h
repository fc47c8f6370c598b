#pragma once

#include <optional>

#include "base/unique_handle_win.h"
#include "menu/menu_tree.h"
#include "player/volume.h"
#include "player/volume_slider_win.h"
#include "window/control_hook.h"
#include "window/window.h"

namespace player {

/// The window `volform`: the volume's slider at the mouse, gone as soon as the
/// listener turns to something else. The native window is made when it opens first.
/// User-interface thread.
class VolForm final : public window::Window, private window::ControlHook {
 public:
  /// The volume and the menu (whose entry names the slider) outlive this.
  VolForm(Volume& volume, const menu::MenuTree& menu);
  ~VolForm() override;

  /// Opens above the mouse pointer.
  void mnuplayervolume_Click();

 private:
  std::optional<LRESULT> onMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  std::optional<LRESULT> onControl(HWND control, UINT message, WPARAM wparam,
                                   LPARAM lparam) override;
  void onDpiChanged() override { dress(); }
  void make();
  void dress();
  void onPaint();
  void background(window::Canvas& canvas) const;

  Volume& volume_;
  const menu::MenuTree& menu_;
  VolumeSlider slider_;
  window::Theme theme_ = window::Theme::current();
  base::UniqueBitmap picture_;
  base::UniqueFont font_;
  int volume_listener_ = 0;
};

}  // namespace player
