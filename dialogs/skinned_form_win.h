#pragma once

#include <optional>

#include "dialogs/skinned_look_win.h"
#include "window/control_hook.h"
#include "window/hot_control.h"
#include "window/window.h"

namespace dialogs {

/// What the small frameless windows have in common: outline and ground, buttons that
/// show the pointer and the press, labels on the ground, dragging, and new clothes when
/// colours or density change. User-interface thread.
class SkinnedForm : protected window::ControlHook {
 protected:
  explicit SkinnedForm(window::Window& window) : window_(window) {}
  ~SkinnedForm() = default;

  /// Makes the look anew and gives each control its font and its place.
  void dress();
  [[nodiscard]] bool dressed() const { return look_.has_value(); }
  /// Only once dressed.
  [[nodiscard]] const SmallForm& look() const { return *look_; }

  /// The window's messages; nothing for what is not the look's.
  std::optional<LRESULT> onSkinMessage(UINT message, WPARAM wparam, LPARAM lparam);
  /// Of the hooked controls, which are the drawn buttons.
  std::optional<LRESULT> onControl(HWND control, UINT message, WPARAM wparam,
                                   LPARAM lparam) override;

  virtual void layOut() = 0;
  /// Above the ground.
  virtual void paint(window::Canvas&) const {}
  [[nodiscard]] virtual COLORREF labelColour(int) const { return look().theme().text; }
  virtual void drawButton(const DRAWITEMSTRUCT& item) const { drawButton(item, false); }
  /// `pressed` although the mouse button is up.
  void drawButton(const DRAWITEMSTRUCT& item, bool pressed) const;

 private:
  void onPaint() const;

  window::Window& window_;
  std::optional<SmallForm> look_;
  window::HotControl hot_;
};

}  // namespace dialogs
