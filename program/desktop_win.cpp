#include "program/desktop_win.h"

#include <objbase.h>
#include <shellapi.h>
#include <shlwapi.h>

#include "base/utf.h"

namespace program {
namespace {

constexpr std::string_view kProgram = "Kestrel";

UINT iconFlag(app::Desktop::Icon icon) {
  switch (icon) {
    case app::Desktop::Icon::exclamation:
      return MB_ICONEXCLAMATION;
    case app::Desktop::Icon::critical:
      return MB_ICONERROR;
    case app::Desktop::Icon::none:
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
  MessageBoxW(nullptr, base::toWide(text).c_str(),
              base::toWide(title.empty() ? kProgram : title).c_str(),
              MB_OK | MB_TASKMODAL | MB_SETFOREGROUND | iconFlag(icon));
}

void DesktopWin::shellopen(std::string_view target) {
  const HourglassScope hourglass;
  ShellExecuteW(nullptr, L"Open", base::toWide(target).c_str(), L"", L"", SW_SHOWNORMAL);
}

bool DesktopWin::isDangerousExtension(std::string_view dotted_extension) {
  return AssocIsDangerous(base::toWide(dotted_extension).c_str()) != FALSE;
}

void DesktopWin::beep() {
  MessageBeep(MB_OK);
}

}  // namespace program
