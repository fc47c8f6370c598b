#include "window/window.h"

#include <algorithm>
#include <exception>
#include <string>
#include <system_error>

#include "base/utf.h"

extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace window {
namespace {

[[noreturn]] void fail(const char* doing) {
  throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), doing);
}

void registerClass(const Creation& creation, WNDPROC procedure) {
  WNDCLASSEXW existing{};
  existing.cbSize = sizeof(existing);
  if (GetClassInfoExW(instance(), creation.class_name, &existing) != FALSE) return;
  WNDCLASSEXW definition{};
  definition.cbSize = sizeof(definition);
  definition.lpfnWndProc = procedure;
  definition.hInstance = instance();
  definition.lpszClassName = creation.class_name;
  definition.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  if (creation.background >= 0) definition.hbrBackground = GetSysColorBrush(creation.background);
  if (creation.icon != 0) {
    definition.hIcon = LoadIconW(instance(), MAKEINTRESOURCEW(creation.icon));
  }
  if (RegisterClassExW(&definition) == 0) fail("RegisterClassEx");
}

/// No exception may cross a window procedure.
void report(const char* what) {
  OutputDebugStringA("Kestrel: a window's handler failed: ");
  OutputDebugStringA(what);
  OutputDebugStringA("\n");
}

}  // namespace

HINSTANCE instance() {
  return reinterpret_cast<HINSTANCE>(&__ImageBase);
}

std::wstring windowText(HWND window) {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  const int length = GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
  text.resize(static_cast<std::size_t>(length));
  return text;
}

Window::~Window() {
  destroy();
}

void Window::destroy() noexcept {
  if (handle_ == nullptr) return;
  const HWND window = handle_;
  handle_ = nullptr;
  // First the pointer: the messages of the destruction must not find this object.
  SetWindowLongPtrW(window, GWLP_USERDATA, 0);
  DestroyWindow(window);
}

void Window::create(const Creation& creation) {
  registerClass(creation, procedure);
  dpi_ = Dpi::of(nullptr);
  const SIZE client{scale(creation.width), scale(creation.height)};
  const SIZE size = dpi_.frame(client, creation.style, creation.ex_style);
  const HWND made = CreateWindowExW(creation.ex_style, creation.class_name,
                                    base::toWide(creation.caption).c_str(),
                                    creation.style & ~WS_VISIBLE, CW_USEDEFAULT, 0, size.cx,
                                    size.cy, creation.owner, nullptr, instance(), this);
  if (made == nullptr) fail("CreateWindowEx");
  dpi_ = Dpi::of(handle_);
  if (creation.width > 0) resizeClient(creation.width, creation.height);
}

LRESULT CALLBACK Window::procedure(HWND window, UINT message, WPARAM wparam,
                                   LPARAM lparam) noexcept {
  if (message == WM_NCCREATE) {
    auto* made = static_cast<Window*>(reinterpret_cast<CREATESTRUCTW*>(lparam)->lpCreateParams);
    made->handle_ = window;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(made));
  }
  auto* self = reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (self == nullptr) return DefWindowProcW(window, message, wparam, lparam);
  try {
    // The handler may have deleted its window object: nothing of it after this.
    if (const auto result = self->receive(message, wparam, lparam)) return *result;
  } catch (const std::exception& error) {
    report(error.what());
  } catch (...) {
    report("unknown exception");
  }
  return DefWindowProcW(window, message, wparam, lparam);
}

std::optional<LRESULT> Window::receive(UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_DPICHANGED) {
    const RECT& place = *reinterpret_cast<const RECT*>(lparam);
    dpi_ = Dpi::announced(wparam);
    SetWindowPos(handle_, nullptr, place.left, place.top, place.right - place.left,
                 place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
    onDpiChanged();
    InvalidateRect(handle_, nullptr, TRUE);
    return 0;
  }
  if (message == WM_NCDESTROY) {
    SetWindowLongPtrW(handle_, GWLP_USERDATA, 0);
    const auto result = onMessage(message, wparam, lparam);
    handle_ = nullptr;
    return result;
  }
  return onMessage(message, wparam, lparam);
}

void Window::setText(std::string_view text) {
  SetWindowTextW(handle_, base::toWide(text).c_str());
}

void Window::show() {
  ShowWindow(handle_, IsIconic(handle_) != FALSE ? SW_RESTORE : SW_SHOW);
  SetForegroundWindow(handle_);
}

HWND Window::addControl(const wchar_t* control_class, std::string_view text, DWORD style, int id,
                        DWORD ex_style) {
  const HWND control = CreateWindowExW(
      ex_style, control_class, base::toWide(text).c_str(), style | WS_CHILD | WS_VISIBLE, 0, 0, 0,
      0, handle_, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), instance(), nullptr);
  if (control == nullptr) fail("CreateWindowEx for a control");
  return control;
}

void Window::place(HWND control, int x, int y, int width, int height) const {
  SetWindowPos(control, nullptr, scale(x), scale(y), scale(width), scale(height),
               SWP_NOZORDER | SWP_NOACTIVATE);
}

void Window::resizeClient(int width, int height) {
  const auto style = static_cast<DWORD>(GetWindowLongPtrW(handle_, GWL_STYLE));
  const auto ex_style = static_cast<DWORD>(GetWindowLongPtrW(handle_, GWL_EXSTYLE));
  const SIZE size = dpi_.frame({scale(width), scale(height)}, style, ex_style);
  SetWindowPos(handle_, nullptr, 0, 0, size.cx, size.cy,
               SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void Window::centre(bool on_primary) {
  const HMONITOR monitor = on_primary ? MonitorFromPoint({0, 0}, MONITOR_DEFAULTTOPRIMARY)
                                      : MonitorFromWindow(handle_, MONITOR_DEFAULTTONEAREST);
  MONITORINFO info{};
  info.cbSize = sizeof(info);
  GetMonitorInfoW(monitor, &info);
  const RECT& work = info.rcWork;
  RECT own{};
  GetWindowRect(handle_, &own);
  if ((GetWindowLongPtrW(handle_, GWL_STYLE) & WS_THICKFRAME) != 0) {
    own.right = std::min(own.right, own.left + work.right - work.left);
    own.bottom = std::min(own.bottom, own.top + work.bottom - work.top);
    SetWindowPos(handle_, nullptr, 0, 0, own.right - own.left, own.bottom - own.top,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
  }
  // One that is larger than the screen shows where it begins.
  const LONG x = std::max(work.left, (work.left + work.right - (own.right - own.left)) / 2);
  const LONG y = std::max(work.top, (work.top + work.bottom - (own.bottom - own.top)) / 2);
  SetWindowPos(handle_, nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace window
