#include "app/desktop_win.h"

#include <objbase.h>
#include <shellapi.h>
#include <shlobj.h>
#include <shlwapi.h>

#include "window/unique_handle.h"
#include "window/utf.h"

namespace app {
namespace {

constexpr std::string_view kProgram = "Kestrel";

UINT iconFlag(Desktop::Icon icon) {
  switch (icon) {
    case Desktop::Icon::exclamation:
      return MB_ICONEXCLAMATION;
    case Desktop::Icon::critical:
      return MB_ICONERROR;
    case Desktop::Icon::none:
      break;
  }
  return 0;
}

/// The hourglass until the end of the scope.
class HourglassScope {
 public:
  HourglassScope() { SetCursor(LoadCursorW(nullptr, IDC_WAIT)); }
  ~HourglassScope() { SetCursor(LoadCursorW(nullptr, IDC_ARROW)); }
  HourglassScope(const HourglassScope&) = delete;
  HourglassScope& operator=(const HourglassScope&) = delete;
};

}  // namespace

void DesktopWin::messageBox(std::string_view text, std::string_view title, Icon icon) {
  // Task-modal, as there may be no window to belong to; and in front, as the program
  // may have none on the screen.
  MessageBoxW(nullptr, window::toWide(text).c_str(),
              window::toWide(title.empty() ? kProgram : title).c_str(),
              MB_OK | MB_TASKMODAL | MB_SETFOREGROUND | iconFlag(icon));
}

void DesktopWin::shellopen(std::string_view target) {
  const HourglassScope hourglass;
  ShellExecuteW(nullptr, L"Open", window::toWide(target).c_str(), L"", L"", SW_SHOWNORMAL);
}

bool DesktopWin::isDangerousExtension(std::string_view dotted_extension) {
  return AssocIsDangerous(window::toWide(dotted_extension).c_str()) != FALSE;
}

void DesktopWin::beep() {
  MessageBeep(MB_OK);
}

std::string specialfolder(int csidl) {
  using UniqueIdList = window::UniqueHandle<LPITEMIDLIST, ILFree>;
  LPITEMIDLIST found = nullptr;
  if (FAILED(SHGetSpecialFolderLocation(nullptr, csidl, &found))) return {};
  const UniqueIdList list(found);
  wchar_t path[MAX_PATH] = {};
  if (SHGetPathFromIDListW(list.get(), path) == FALSE) return {};
  return window::toNarrow(path);
}

std::string programFolder() {
  std::wstring path(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      break;
    }
    path.resize(path.size() * 2);
  }
  return window::toNarrow(path.substr(0, path.find_last_of(L'\\')));
}

}  // namespace app
