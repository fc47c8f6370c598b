#include "window/hot_control.h"

namespace window {

void HotControl::onMessage(HWND control, UINT message) {
  if (message != WM_MOUSEMOVE && message != WM_MOUSELEAVE) return;
  const HWND now = message == WM_MOUSEMOVE ? control : nullptr;
  if (now == control_) return;
  if (control_ != nullptr) InvalidateRect(control_, nullptr, FALSE);
  control_ = now;
  InvalidateRect(control, nullptr, FALSE);
  if (now == nullptr) return;
  TRACKMOUSEEVENT track{sizeof(track), TME_LEAVE, control, 0};
  TrackMouseEvent(&track);
}

}  // namespace window
