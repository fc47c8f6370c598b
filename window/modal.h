#pragma once

#include "window/window.h"

namespace window {

/// A window that asks something and waits for the answer. While it waits its owner is
/// disabled; other windows of the program live on. WS_EX_CONTROLPARENT brings it the
/// dialog keys; Enter presses the button that has the focus, else IDOK.
/// User-interface thread.
class Modal : public Window {
 protected:
  /// Shows the window in the middle of its screen, with the focus on a control, and
  /// returns after end() or once the program is to end; then it is hidden again.
  void run(HWND owner, HWND focus);
  void end();

  /// A control's notification; IDCANCEL (0) also for Esc and the close box.
  virtual void onCommand(int id, int notification) = 0;

  /// Derived classes hand on what they do not handle.
  std::optional<LRESULT> onMessage(UINT message, WPARAM wparam, LPARAM lparam) override;

  [[nodiscard]] HWND control(int id) const { return GetDlgItem(handle(), id); }

 private:
  void wait();
  /// The focus to a control, or on from where it is.
  void nextControl(WPARAM where, bool is_handle);

  bool open_ = false;
  HWND focus_ = nullptr;  ///< control that has the focus while the window is active
};

}  // namespace window
