#include "tests/wine_desktop.h"

#include <shellapi.h>

#include <array>
#include <cstdint>
#include <utility>

#include "window/message_pump.h"
#include "window/system_function.h"
#include "window/utf.h"

namespace test {
namespace {

std::wstring className(HWND window) {
  std::array<wchar_t, 64> name{};
  GetClassNameW(window, name.data(), static_cast<int>(name.size()));
  return name.data();
}

template <typename Step>
bool until(const std::function<bool()>& condition, std::chrono::milliseconds limit, Step step) {
  const auto end = std::chrono::steady_clock::now() + limit;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    step();
    Sleep(5);
  }
  return true;
}

BOOL CALLBACK collect(HWND window, LPARAM list) {
  reinterpret_cast<std::vector<HWND>*>(list)->push_back(window);
  return TRUE;
}

DWORD WINAPI runWork(void* work) {
  (*static_cast<std::function<void()>*>(work))();
  return 0;
}

/// Live entries of this process in the graphics system's handle table, which the
/// process environment block points to.
int graphicsObjects() {
  struct Entry {
    std::uint64_t object;
    std::uint16_t owner;
    std::uint16_t generation;
    std::uint8_t type;
    std::uint8_t flags;
    std::uint16_t unknown;
    std::uint64_t user;
  };
  constexpr int kEntries = 0x4000;
  using Block = const char* NTAPI();
  const auto current = window::systemFunction<Block*>(L"ntdll.dll", "RtlGetCurrentPeb");
  constexpr int kTableOffset = sizeof(void*) == 8 ? 0xF8 : 0x94;
  const auto* table = *reinterpret_cast<const Entry* const*>(current() + kTableOffset);
  int live = 0;
  if (table == nullptr) return live;
  for (int i = 0; i < kEntries; ++i) live += table[i].type != 0 ? 1 : 0;
  return live;
}

}  // namespace

bool pumpUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  return until(condition, limit, [] { (void)window::dispatchPending(); });
}

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit) {
  return until(condition, limit, [] {});
}

void moveMouse(POINT at) {
  INPUT input{};
  input.type = INPUT_MOUSE;
  input.mi.dwFlags = MOUSEEVENTF_MOVE | MOUSEEVENTF_ABSOLUTE;
  // Absolute positions are 65536ths of the screen.
  input.mi.dx = MulDiv(at.x, 65536, GetSystemMetrics(SM_CXSCREEN)) + 1;
  input.mi.dy = MulDiv(at.y, 65536, GetSystemMetrics(SM_CYSCREEN)) + 1;
  SendInput(1, &input, sizeof(input));
}

void clickMouse(POINT at, bool left) {
  moveMouse(at);
  INPUT input{};
  input.type = INPUT_MOUSE;
  input.mi.dwFlags = left ? MOUSEEVENTF_LEFTDOWN : MOUSEEVENTF_RIGHTDOWN;
  SendInput(1, &input, sizeof(input));
  input.mi.dwFlags = left ? MOUSEEVENTF_LEFTUP : MOUSEEVENTF_RIGHTUP;
  SendInput(1, &input, sizeof(input));
}

void pressKey(WORD key) {
  INPUT input{};
  input.type = INPUT_KEYBOARD;
  input.ki.wVk = key;
  SendInput(1, &input, sizeof(input));
  input.ki.dwFlags = KEYEVENTF_KEYUP;
  SendInput(1, &input, sizeof(input));
}

std::vector<HWND> openMenus() {
  std::vector<HWND> all;
  EnumWindows(collect, reinterpret_cast<LPARAM>(&all));
  std::vector<HWND> menus;
  for (const HWND window : all) {
    if (IsWindowVisible(window) != FALSE && className(window) == L"#32768") menus.push_back(window);
  }
  return menus;
}

std::vector<std::wstring> menuTexts(HWND popup) {
  const auto menu = reinterpret_cast<HMENU>(SendMessageW(popup, MN_GETHMENU, 0, 0));
  std::vector<std::wstring> texts;
  for (int i = 0; i < GetMenuItemCount(menu); ++i) {
    std::array<wchar_t, 256> text{};
    GetMenuStringW(menu, static_cast<UINT>(i), text.data(), static_cast<int>(text.size()),
                   MF_BYPOSITION);
    texts.emplace_back(text.data());
  }
  return texts;
}

std::vector<std::string> trayTips() {
  DWORD shell = 0;
  GetWindowThreadProcessId(FindWindowW(L"Shell_TrayWnd", nullptr), &shell);
  std::vector<HWND> all;
  EnumWindows(collect, reinterpret_cast<LPARAM>(&all));
  std::vector<std::string> tips;
  for (const HWND window : all) {
    DWORD owner = 0;
    GetWindowThreadProcessId(window, &owner);
    if (owner != shell || className(window) != L"tooltips_class32") continue;
    std::array<wchar_t, 256> text{};
    SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    tips.push_back(window::toNarrow(text.data()));
  }
  return tips;
}

bool hasTrayIcon(HWND window) {
  NOTIFYICONDATAA record{};
  record.cbSize = NOTIFYICONDATAA_V1_SIZE;
  record.hWnd = window;
  record.uID = 1;
  // Changes nothing, and is refused for an icon that is not there.
  return Shell_NotifyIconA(NIM_MODIFY, &record) != FALSE;
}

POINT trayIconPlace() {
  RECT taskbar{};
  GetWindowRect(FindWindowW(L"Shell_TrayWnd", nullptr), &taskbar);
  const LONG half = (taskbar.bottom - taskbar.top) / 2;
  return {taskbar.right - half, taskbar.top + half};
}

Resources resources() {
  DWORD kernel = 0;
  GetProcessHandleCount(GetCurrentProcess(), &kernel);
  const HMENU probe = CreateMenu();
  const int user = LOWORD(reinterpret_cast<ULONG_PTR>(probe));
  DestroyMenu(probe);
  return {graphicsObjects(), static_cast<int>(kernel), user};
}

Hands::Hands(std::function<void()> work) : work_(std::move(work)) {
  thread_ = CreateThread(nullptr, 0, runWork, &work_, 0, nullptr);
}

Hands::~Hands() {
  WaitForSingleObject(thread_, INFINITE);
  CloseHandle(thread_);
}

}  // namespace test
