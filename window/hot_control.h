#pragma once

#include <windows.h>

namespace window {

/// Which of a window's hooked controls the pointer is over; repaints those that it
/// comes to and leaves. User-interface thread.
class HotControl {
 public:
  /// A hooked control's message; others than the pointer's are left alone.
  void onMessage(HWND control, UINT message);

  [[nodiscard]] bool is(HWND control) const { return control_ == control; }

 private:
  HWND control_ = nullptr;
};

}  // namespace window
