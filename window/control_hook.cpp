#include "window/control_hook.h"

#include <commctrl.h>

#include <exception>

namespace window {

void ControlHook::hook(HWND control) {
  SetWindowSubclass(control, procedure, 0, reinterpret_cast<DWORD_PTR>(this));
}

LRESULT CALLBACK ControlHook::procedure(HWND control, UINT message, WPARAM wparam, LPARAM lparam,
                                        UINT_PTR id, DWORD_PTR self) noexcept {
  if (message == WM_NCDESTROY) {
    RemoveWindowSubclass(control, procedure, id);
    return DefSubclassProc(control, message, wparam, lparam);
  }
  try {
    auto* const hook = reinterpret_cast<ControlHook*>(self);
    if (const auto result = hook->onControl(control, message, wparam, lparam)) return *result;
  } catch (const std::exception& error) {  // none may cross a window procedure
    OutputDebugStringA(error.what());
  }
  return DefSubclassProc(control, message, wparam, lparam);
}

}  // namespace window
