#include "window/message_pump.h"

namespace window {

int runMessageLoop() {
  MSG message{};
  while (GetMessageW(&message, nullptr, 0, 0) > 0) dispatch(message);
  return static_cast<int>(message.wParam);
}

bool dispatchPending() {
  MSG message{};
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
    if (message.message == WM_QUIT) {
      PostQuitMessage(static_cast<int>(message.wParam));
      return false;
    }
    dispatch(message);
  }
  return true;
}

void dispatch(MSG& message) {
  const HWND root = GetAncestor(message.hwnd, GA_ROOT);
  const bool dialog_keys =
      root != nullptr && (GetWindowLongPtrW(root, GWL_EXSTYLE) & WS_EX_CONTROLPARENT) != 0;
  if (dialog_keys && IsDialogMessageW(root, &message) != FALSE) return;
  TranslateMessage(&message);
  DispatchMessageW(&message);
}

}  // namespace window
