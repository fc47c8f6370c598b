// The yardstick for starting and for memory: the smallest finished program with
// an icon in the notification area. It stays until it is told to close.
#include <windows.h>

#include <shellapi.h>

#include <cwchar>

namespace {

constexpr UINT kTrayMessage = WM_APP;

LRESULT CALLBACK onMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_DESTROY) PostQuitMessage(0);
  return DefWindowProcW(window, message, wparam, lparam);
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, wchar_t*, int) {
  WNDCLASSW window_class{};
  window_class.lpfnWndProc = onMessage;
  window_class.hInstance = instance;
  window_class.lpszClassName = L"MinimalTray";
  RegisterClassW(&window_class);
  const HWND window = CreateWindowW(L"MinimalTray", L"Minimal", WS_OVERLAPPED, 0, 0, 0, 0, nullptr,
                                    nullptr, instance, nullptr);
  NOTIFYICONDATAW icon{};
  icon.cbSize = sizeof icon;
  icon.hWnd = window;
  icon.uID = 1;
  icon.uFlags = NIF_ICON | NIF_MESSAGE | NIF_TIP;
  icon.uCallbackMessage = kTrayMessage;
  icon.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
  wcscpy(icon.szTip, L"Minimal");
  if (Shell_NotifyIconW(NIM_ADD, &icon) == FALSE) return 1;
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  Shell_NotifyIconW(NIM_DELETE, &icon);
  return 0;
}
