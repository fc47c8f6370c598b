// when_ready PROGRAM [ARGUMENT...]: starts a program, waits for its icon in the
// notification area, and writes its process id and the milliseconds that took.
#include <windows.h>

#include <cstdio>
#include <cwchar>
#include <string>

namespace {

constexpr double kPatience = 60000;  // ms

struct Icons {
  DWORD taskbar;  ///< its process
  int count;
};

BOOL CALLBACK countIcon(HWND window, LPARAM argument) {
  auto* icons = reinterpret_cast<Icons*>(argument);
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  wchar_t name[32]{};
  if (process == icons->taskbar && GetClassNameW(window, name, 32) != 0 &&
      std::wcscmp(name, L"tooltips_class32") == 0)
    ++icons->count;
  return TRUE;
}

/// Icons in the notification area: under Wine each brings its own tip window along.
int countIcons() {
  Icons icons{};
  GetWindowThreadProcessId(FindWindowW(L"Shell_TrayWnd", nullptr), &icons.taskbar);
  EnumWindows(countIcon, reinterpret_cast<LPARAM>(&icons));
  return icons.count;
}

double now() {
  LARGE_INTEGER count{}, frequency{};
  QueryPerformanceCounter(&count);
  QueryPerformanceFrequency(&frequency);
  return 1000.0 * static_cast<double>(count.QuadPart) / static_cast<double>(frequency.QuadPart);
}

int fail(const char* what) {
  std::fprintf(stderr, "when_ready: %s, error %lu\n", what, GetLastError());
  return 1;
}

/// Arguments stand as they are: some programs compare their whole command line.
std::wstring commandLine(int count, wchar_t** arguments) {
  std::wstring command = L"\"" + std::wstring(arguments[0]) + L"\"";
  for (int i = 1; i < count; ++i) command += L" " + std::wstring(arguments[i]);
  return command;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc < 2) return fail("no program named");
  std::wstring command = commandLine(argc - 1, argv + 1);
  const int icons_before = countIcons();
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  const double begin = now();
  if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                     &startup, &process) == FALSE)
    return fail("cannot start the program");
  while (countIcons() <= icons_before) {
    if (WaitForSingleObject(process.hProcess, 1) == WAIT_OBJECT_0)
      return fail("the program ended without an icon");
    if (now() - begin > kPatience) return fail("no icon came");
  }
  std::printf("%lu %.3f\n", process.dwProcessId, now() - begin);
  return 0;
}
