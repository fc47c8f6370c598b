#pragma once

#include <optional>

#include "player/volume.h"
#include "player/volume_slider_win.h"
#include "tray/menu_tree.h"
#include "window/control_hook.h"
#include "window/unique_handle.h"
#include "window/window.h"

namespace player {

/// The window `volform`: the volume's slider at the mouse, gone as soon as the
/// listener turns to something else. The native window is made when it opens first.
/// User-interface thread.
class VolForm final : public window::Window, private window::ControlHook {
 public:
  /// The volume and the menu (whose entry names the slider) outlive this.
  VolForm(Volume& volume, const tray::MenuTree& menu);
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
  const tray::MenuTree& menu_;
  VolumeSlider slider_;
  window::Theme theme_ = window::Theme::current();
  window::UniqueBitmap picture_;
  window::UniqueFont font_;
  int volume_listener_ = 0;
};

}  // namespace player
