#include "player/skinmodule_win.h"

namespace player {

void DragWindow(HWND window) {
  ReleaseCapture();
  SendMessageW(window, WM_NCLBUTTONDOWN, HTCAPTION, 0);
}

}  // namespace player
