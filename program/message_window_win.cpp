#include "program/message_window_win.h"

#include <cstring>
#include <exception>
#include <system_error>
#include <utility>

#include "window/window.h"

namespace program {
namespace {

#ifndef _WIN64
static_assert(sizeof(COPYDATASTRUCT) == 12, "the published size of the copy-data record");
#endif

constexpr const wchar_t* kClass = L"KestrelMessage";
constexpr ULONG_PTR kSpecialsChanged = 1;

HWND makeWindow() {
  WNDCLASSEXW definition{};
  definition.cbSize = sizeof(definition);
  definition.lpfnWndProc = DefWindowProcW;
  definition.hInstance = window::instance();
  definition.lpszClassName = kClass;
  RegisterClassExW(&definition);
  const HWND made = CreateWindowExW(0, kClass, L"kesziel", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr,
                                    window::instance(), nullptr);
  if (made == nullptr) {
    throw std::system_error(static_cast<int>(GetLastError()), std::system_category(),
                            "making the message window");
  }
  return made;
}

}  // namespace

KesMessage::KesMessage(std::function<void()> specials_changed)
    : specials_changed_(std::move(specials_changed)), window_(makeWindow()) {
  SetWindowLongPtrW(handle(), GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  previous_ = reinterpret_cast<WNDPROC>(
      SetWindowLongPtrW(handle(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(procedure)));
}

KesMessage::~KesMessage() {
  SetWindowLongPtrW(handle(), GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous_));
}

LRESULT CALLBACK KesMessage::procedure(HWND window, UINT message, WPARAM wparam,
                                       LPARAM lparam) noexcept {
  auto* self = reinterpret_cast<KesMessage*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  const WNDPROC previous = self->previous_;
  if (message == WM_COPYDATA) self->onCopyData(lparam);
  return CallWindowProcW(previous, window, message, wparam, lparam);
}

void KesMessage::onCopyData(LPARAM lparam) noexcept {
  COPYDATASTRUCT record{};
  if (lparam != 0) std::memcpy(&record, reinterpret_cast<const void*>(lparam), sizeof(record));
  if (record.dwData != kSpecialsChanged) return;
  try {
    specials_changed_();
  } catch (const std::exception& error) {
    OutputDebugStringA(error.what());
  }
}

}  // namespace program
