#include <windows.h>
// Needs windows.h first.
#include <shellapi.h>
#include <tlhelp32.h>

#include <array>
#include <chrono>
#include <cmath>
#include <memory>

#include "probe.h"

namespace desktop_test {
namespace {

constexpr DWORD kPatience = 20'000;  // ms; the machine may be busy

struct CloseIt {
  using pointer = HANDLE;
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<HANDLE, CloseIt>;

Handle owned(HANDLE handle, const char* what) {
  if (handle == nullptr || handle == INVALID_HANDLE_VALUE) fail(what);
  return Handle(handle);
}

Handle process(const Words& words, DWORD rights) {
  return owned(OpenProcess(rights, FALSE, static_cast<DWORD>(number(words, 1))),
               "opening the process");
}

/// Programs that run, by file name: processes NAME
void processes(const Words& words, Json& answer) {
  const Handle list = owned(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0), "listing processes");
  PROCESSENTRY32W entry{};
  entry.dwSize = sizeof(entry);
  answer.open('[');
  for (BOOL more = Process32FirstW(list.get(), &entry); more != FALSE;
       more = Process32NextW(list.get(), &entry)) {
    if (lstrcmpiW(entry.szExeFile, base::toWide(words.at(1)).c_str()) == 0)
      answer.value(0LL + entry.th32ProcessID);
  }
  answer.close(']');
}

void terminate(const Words& words, Json& answer) {
  const Handle target = process(words, PROCESS_TERMINATE | SYNCHRONIZE);
  if (TerminateProcess(target.get(), 99) == FALSE) fail("ending the process");
  answer.value(WaitForSingleObject(target.get(), kPatience) == WAIT_OBJECT_0);
}

struct Icons {
  DWORD taskbar;  ///< its process
  int count;
};

BOOL CALLBACK countIcon(HWND window, LPARAM lparam) {
  auto& icons = *reinterpret_cast<Icons*>(lparam);
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  if (process == icons.taskbar && className(window) == L"tooltips_class32") ++icons.count;
  return TRUE;
}

/// In the notification area: under Wine each icon brings its own tip window along.
int icons() {
  Icons icons{};
  GetWindowThreadProcessId(FindWindowW(L"Shell_TrayWnd", nullptr), &icons.taskbar);
  EnumWindows(countIcon, reinterpret_cast<LPARAM>(&icons));
  return icons.count;
}

/// Starts a program and waits for its icon: whenready COMMAND. Answers its process id
/// and the microseconds that took.
void whenready(const Words& words, Json& answer) {
  std::wstring command = base::toWide(words.at(1));
  const int before = icons();
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION made{};
  const auto begin = std::chrono::steady_clock::now();
  if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                     &startup, &made) == FALSE)
    fail("starting the program");
  const Handle thread(made.hThread), target(made.hProcess);
  while (icons() <= before) {
    if (WaitForSingleObject(target.get(), 1) == WAIT_OBJECT_0)
      throw std::runtime_error("it ended without an icon");
  }
  const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - begin;
  answer.open('[').value(0LL + made.dwProcessId);
  answer.value(std::llround(took.count() * 1000)).close(']');
}

/// Has the process load a DLL: inject PROCESS FILE
void inject(const Words& words, Json& answer) {
  const Handle target = process(words, PROCESS_ALL_ACCESS);
  const std::wstring file = base::toWide(words.at(2));
  const SIZE_T bytes = (file.size() + 1) * sizeof(wchar_t);
  void* there = VirtualAllocEx(target.get(), nullptr, bytes, MEM_COMMIT, PAGE_READWRITE);
  if (there == nullptr ||
      WriteProcessMemory(target.get(), there, file.c_str(), bytes, nullptr) == FALSE)
    fail("handing over the file name");
  // System libraries stand at the same address in every process.
  const auto load = reinterpret_cast<LPTHREAD_START_ROUTINE>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"kernel32"), "LoadLibraryW")));
  const Handle thread =
      owned(CreateRemoteThread(target.get(), nullptr, 0, load, there, 0, nullptr), "injecting");
  if (WaitForSingleObject(thread.get(), kPatience) != WAIT_OBJECT_0)
    fail("waiting for the library");
  DWORD loaded = 0;
  if (GetExitCodeThread(thread.get(), &loaded) == FALSE || loaded == 0)
    throw std::runtime_error("the process did not load " + words[2]);
  VirtualFreeEx(target.get(), there, 0, MEM_RELEASE);
  answer.value(true);
}

/// The agent answers one at a time, and not at once after it was brought in.
Handle connectToAgent(HANDLE target) {
  const std::wstring name = agentPipe(GetProcessId(target));
  const ULONGLONG deadline = GetTickCount64() + kPatience;
  for (;;) {
    const HANDLE pipe = CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    if (pipe != INVALID_HANDLE_VALUE) return Handle(pipe);
    if (GetTickCount64() > deadline) fail("the agent does not answer");
    if (WaitForSingleObject(target, 1) == WAIT_OBJECT_0)
      throw std::runtime_error("the process has ended");
  }
}

/// What the agent within a process answers to a request: agent PROCESS REQUEST
void agent(const Words& words, Json& answer) {
  const Handle target = process(words, PROCESS_QUERY_INFORMATION | SYNCHRONIZE);
  const Handle pipe = connectToAgent(target.get());
  const std::string& request = words.at(2);
  DWORD written = 0;
  WriteFile(pipe.get(), request.data(), static_cast<DWORD>(request.size()), &written, nullptr);
  std::string json;
  std::array<char, 65536> piece{};
  DWORD got = 0;
  while (ReadFile(pipe.get(), piece.data(), static_cast<DWORD>(piece.size()), &got, nullptr) !=
             FALSE &&
         got != 0)
    json.append(piece.data(), got);
  if (json.empty()) fail("the agent said nothing");
  answer.raw(json);
}

/// A text value under HKEY_LOCAL_MACHINE or HKEY_CURRENT_USER: regset HKLM KEY NAME TEXT
void regset(const Words& words, Json& answer) {
  const HKEY root = words.at(1) == "HKLM" ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
  const std::wstring text = base::toWide(words.at(4));
  const LSTATUS status = RegSetKeyValueW(root, base::toWide(words.at(2)).c_str(),
                                         base::toWide(words.at(3)).c_str(), REG_SZ, text.c_str(),
                                         static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
  if (status != ERROR_SUCCESS) throw std::runtime_error("registry error " + std::to_string(status));
  answer.value(true);
}

}  // namespace

const Commands kProcessCommands = {{"processes", processes}, {"terminate", terminate},
                                   {"inject", inject},       {"agent", agent},
                                   {"regset", regset},       {"whenready", whenready}};

}  // namespace desktop_test
