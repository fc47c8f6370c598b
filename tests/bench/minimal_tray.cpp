// The yardstick for starting and for memory: the smallest finished program with
// an icon in the notification area.
//   minimal_tray          stays until it is told to close
//   minimal_tray --once   writes the milliseconds since the process was made, and ends
#include <windows.h>

#include <shellapi.h>

#include <cstdio>
#include <cwchar>

namespace {

constexpr UINT kTrayMessage = WM_APP;

LRESULT CALLBACK onMessage(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_DESTROY) PostQuitMessage(0);
  return DefWindowProcW(window, message, wparam, lparam);
}

ULONGLONG ticks(const FILETIME& time) {
  return ULONGLONG{time.dwHighDateTime} << 32U | time.dwLowDateTime;
}

double millisecondsSinceStart() {
  FILETIME created{}, exited{}, kernel{}, user{}, now{};
  GetProcessTimes(GetCurrentProcess(), &created, &exited, &kernel, &user);
  GetSystemTimePreciseAsFileTime(&now);
  return static_cast<double>(ticks(now) - ticks(created)) / 10000;
}

void writeLine(const char* text) {
  DWORD written = 0;
  WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), text, static_cast<DWORD>(strlen(text)), &written,
            nullptr);
}

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, wchar_t* arguments, int) {
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

  if (wcscmp(arguments, L"--once") == 0) {
    char line[64];
    snprintf(line, sizeof line, "%.3f\n", millisecondsSinceStart());
    writeLine(line);
    PostQuitMessage(0);
  }
  MSG message;
  while (GetMessageW(&message, nullptr, 0, 0) > 0) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
  Shell_NotifyIconW(NIM_DELETE, &icon);
  return 0;
}
