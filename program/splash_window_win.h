#pragma once

#include <functional>
#include <string_view>

#include "app/captions.h"
#include "base/unique_handle_win.h"
#include "window/window.h"

namespace program {

/// The picture shown while the program loads, with a version line and a message
/// line (caption "splash.Label1"). User-interface thread.
class Splash final : public window::Window {
 public:
  /// Makes it hidden, in the middle of the primary screen. `timer1` runs every
  /// 100 ms from now on, hidden or not; it may destroy this window. `captions`
  /// outlives this.
  Splash(app::Captions& captions, std::string_view version, std::function<void()> timer1);
  ~Splash() override;

  /// Puts it on the screen, painted, without taking the focus.
  void open();

 private:
  std::optional<LRESULT> onMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  void onDpiChanged() override;
  void layOut();
  void onPaint();
  LRESULT onLabelColours(HDC dc, HWND label) const;

  app::Captions& captions_;
  std::function<void()> timer1_;
  HWND version_label_ = nullptr;
  HWND label1_ = nullptr;
  base::UniqueBitmap picture_;
  base::UniqueBrush picture_brush_;
  base::UniqueFont version_font_;
  base::UniqueFont label_font_;
  int listener_;
};

}  // namespace program
