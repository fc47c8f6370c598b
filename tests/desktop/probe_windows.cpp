#include <windows.h>
// Needs windows.h first.
#include <shellapi.h>

#include <array>

#include "probe.h"
#include "window/window.h"

namespace desktop_test {
namespace {

constexpr UINT kPatience = 20'000;  // ms for a window's answer; the machine may be busy

HWND target(const Words& words) {
  return reinterpret_cast<HWND>(static_cast<INT_PTR>(number(words, 1)));
}

LRESULT ask(HWND target, UINT message, WPARAM wparam, LPARAM lparam) {
  DWORD_PTR result = 0;
  SetLastError(0);
  if (SendMessageTimeoutW(target, message, wparam, lparam, SMTO_NORMAL, kPatience, &result) == 0)
    fail("the window does not answer");
  return static_cast<LRESULT>(result);
}

/// What a screen reader would get.
std::wstring textOf(HWND target) {
  std::wstring text(static_cast<std::size_t>(ask(target, WM_GETTEXTLENGTH, 0, 0)) + 1, L'\0');
  const LRESULT length =
      ask(target, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
  text.resize(static_cast<std::size_t>(length));
  return text;
}

void describe(Json& json, HWND target, const std::wstring& text) {
  DWORD process = 0;
  GetWindowThreadProcessId(target, &process);
  RECT rect{};
  GetWindowRect(target, &rect);
  json.open('{')
      .fields("handle", handle(target), "class_name", className(target), "text", text, "process",
              0LL + process, "id", 0LL + GetDlgCtrlID(target), "visible",
              IsWindowVisible(target) != FALSE, "enabled", IsWindowEnabled(target) != FALSE,
              "topmost", (GetWindowLongW(target, GWL_EXSTYLE) & WS_EX_TOPMOST) != 0, "rect", rect)
      .close('}');
}

BOOL CALLBACK describeTop(HWND target, LPARAM json) {
  describe(*reinterpret_cast<Json*>(json), target, window::windowText(target));
  return TRUE;
}

BOOL CALLBACK describeChild(HWND target, LPARAM json) {
  describe(*reinterpret_cast<Json*>(json), target, textOf(target));
  return TRUE;
}

void windows(const Words&, Json& answer) {
  answer.open('[');
  EnumWindows(describeTop, reinterpret_cast<LPARAM>(&answer));
  answer.close(']');
}

void children(const Words& words, Json& answer) {
  answer.open('[');
  EnumChildWindows(target(words), describeChild, reinterpret_cast<LPARAM>(&answer));
  answer.close(']');
}

void text(const Words& words, Json& answer) {
  answer.value(std::wstring_view(textOf(target(words))));
}

void send(const Words& words, Json& answer) {
  answer.value(static_cast<long long>(ask(target(words), static_cast<UINT>(number(words, 2)),
                                          static_cast<WPARAM>(number(words, 3)),
                                          static_cast<LPARAM>(number(words, 4)))));
}

void post(const Words& words, Json& answer) {
  if (PostMessageW(target(words), static_cast<UINT>(number(words, 2)),
                   static_cast<WPARAM>(number(words, 3)),
                   static_cast<LPARAM>(number(words, 4))) == FALSE)
    fail("posting");
  answer.value(true);
}

/// copydata WINDOW DWDATA TEXT
void copydata(const Words& words, Json& answer) {
  COPYDATASTRUCT record{};
  std::string data = words.at(3);
  record.dwData = static_cast<ULONG_PTR>(number(words, 2));
  record.cbData = static_cast<DWORD>(data.size());
  record.lpData = data.data();
  answer.value(static_cast<long long>(
      ask(target(words), WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&record))));
}

/// A registered message to every top-level window: broadcast NAME
void broadcast(const Words& words, Json& answer) {
  const UINT message = RegisterWindowMessageW(base::toWide(words.at(1)).c_str());
  if (PostMessageW(HWND_BROADCAST, message, 0, 0) == FALSE) fail("broadcasting");
  answer.value(static_cast<long long>(message));
}

/// Takes an icon out of the tray behind its owner's back, as a new taskbar would:
/// forgeticon WINDOW ID
void forgeticon(const Words& words, Json& answer) {
  NOTIFYICONDATAW record{};
  record.cbSize = sizeof(record);
  record.hWnd = target(words);
  record.uID = static_cast<UINT>(number(words, 2));
  answer.value(Shell_NotifyIconW(NIM_DELETE, &record) != FALSE);
}

void foreground(const Words&, Json& answer) {
  GUITHREADINFO info{};
  info.cbSize = sizeof(info);
  GetGUIThreadInfo(0, &info);
  answer.open('{')
      .fields("window", handle(GetForegroundWindow()), "focus", handle(info.hwndFocus))
      .close('}');
}

}  // namespace

const Commands kWindowCommands = {
    {"windows", windows},
    {"children", children},
    {"text", text},
    {"send", send},
    {"post", post},
    {"copydata", copydata},
    {"broadcast", broadcast},
    {"forgeticon", forgeticon},
    {"foreground", foreground},
};

}  // namespace desktop_test
