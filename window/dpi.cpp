#include "window/dpi.h"

#include <cwchar>

#include "base/system_function_win.h"
#include "window/gdi.h"

namespace window {
namespace {

/// The density asked for by KESTREL_DPI, 0 without it.
int overridden() {
  wchar_t text[8] = {};
  const DWORD length = GetEnvironmentVariableW(L"KESTREL_DPI", text, ARRAYSIZE(text));
  if (length == 0 || length >= ARRAYSIZE(text)) return 0;
  const long value = std::wcstol(text, nullptr, 10);
  return value >= 48 && value <= 960 ? static_cast<int>(value) : 0;
}

/// What the metrics are given in that are not asked for a density.
int systemDpi() {
  const WindowDc screen(nullptr);
  return GetDeviceCaps(screen.get(), LOGPIXELSX);
}

}  // namespace

Dpi Dpi::of(HWND window) {
  if (const int value = overridden(); value != 0) return Dpi(value);
  static const auto ask =
      base::systemFunction<decltype(&GetDpiForWindow)>(L"user32.dll", "GetDpiForWindow");
  if (ask != nullptr && window != nullptr) return Dpi(static_cast<int>(ask(window)));
  return Dpi(systemDpi());
}

Dpi Dpi::announced(WPARAM wparam) {
  const int value = overridden();
  return Dpi(value != 0 ? value : LOWORD(wparam));
}

int Dpi::metric(int index) const {
  static const auto ask = base::systemFunction<decltype(&GetSystemMetricsForDpi)>(
      L"user32.dll", "GetSystemMetricsForDpi");
  if (ask != nullptr) return ask(index, static_cast<UINT>(value_));
  return MulDiv(GetSystemMetrics(index), value_, systemDpi());
}

SIZE Dpi::frame(SIZE client, DWORD style, DWORD ex_style) const {
  static const auto ask = base::systemFunction<decltype(&AdjustWindowRectExForDpi)>(
      L"user32.dll", "AdjustWindowRectExForDpi");
  RECT rect{0, 0, client.cx, client.cy};
  if (ask != nullptr) {
    ask(&rect, style, FALSE, ex_style, static_cast<UINT>(value_));
  } else {
    AdjustWindowRectEx(&rect, style, FALSE, ex_style);
  }
  return {rect.right - rect.left, rect.bottom - rect.top};
}

}  // namespace window
