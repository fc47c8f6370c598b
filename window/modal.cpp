#include "window/modal.h"

#include <utility>

#include "window/message_pump.h"

namespace window {
namespace {

/// The owner without its menu and its icon's clicks, until the end of the scope.
class DisabledScope {
 public:
  explicit DisabledScope(HWND window) : window_(window) {
    was_disabled_ = window_ == nullptr || EnableWindow(window_, FALSE) != FALSE;
  }
  ~DisabledScope() {
    if (!was_disabled_) EnableWindow(window_, TRUE);
  }
  DisabledScope(const DisabledScope&) = delete;
  DisabledScope& operator=(const DisabledScope&) = delete;

 private:
  HWND window_;
  bool was_disabled_;
};

bool isPushButton(HWND control) {
  if ((SendMessageW(control, WM_GETDLGCODE, 0, 0) & DLGC_BUTTON) == 0) return false;
  const LONG_PTR type = GetWindowLongPtrW(control, GWL_STYLE) & BS_TYPEMASK;
  return type == BS_PUSHBUTTON || type == BS_DEFPUSHBUTTON || type == BS_OWNERDRAW;
}

}  // namespace

void Modal::run(HWND owner, HWND focus) {
  {
    const DisabledScope disabled(owner);
    focus_ = focus;
    open_ = true;
    centre(false);
    show();
    SetFocus(focus_);
    wait();
  }
  if (handle() != nullptr) hide();  // after the owner is enabled: the next one is activated
}

void Modal::wait() {
  MSG message{};
  while (open_ && handle() != nullptr) {
    if (GetMessageW(&message, nullptr, 0, 0) <= 0) {
      // The loops further out must see it too.
      PostQuitMessage(static_cast<int>(message.wParam));
      return;
    }
    dispatch(message);
  }
}

void Modal::end() {
  open_ = false;
  // What ends it may have been sent by another thread, which wakes no loop.
  PostMessageW(handle(), WM_NULL, 0, 0);
}

// An edit field of several lines, which takes Tab itself, asks for it, and under Wine the
// letters of captions do.
void Modal::nextControl(WPARAM where, bool is_handle) {
  const HWND next = is_handle ? reinterpret_cast<HWND>(where)
                              : GetNextDlgTabItem(handle(), GetFocus(), where != 0 ? TRUE : FALSE);
  SetFocus(next);
}

std::optional<LRESULT> Modal::onMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_COMMAND:
      return onCommand(LOWORD(wparam), HIWORD(wparam)), 0;
    case WM_CLOSE:
      return onCommand(IDCANCEL, 0), 0;
    case DM_GETDEFID: {
      const HWND focus = GetFocus();
      return MAKELRESULT(isPushButton(focus) ? GetDlgCtrlID(focus) : IDOK, DC_HASDEFID);
    }
    case WM_NEXTDLGCTL:
      return nextControl(wparam, LOWORD(lparam) != 0), 0;
    case WM_ACTIVATE:
      if (LOWORD(wparam) == WA_INACTIVE && IsChild(handle(), GetFocus()) != FALSE) {
        focus_ = GetFocus();
      }
      return std::nullopt;
    case WM_SETFOCUS:
      return SetFocus(focus_), 0;
    default:
      return std::nullopt;
  }
}

}  // namespace window
