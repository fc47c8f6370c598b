#include <windows.h>
// The API set that follows needs windows.h first.
#include <psapi.h>
#include <shellapi.h>
#include <tlhelp32.h>

#include <array>
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
    if (lstrcmpiW(entry.szExeFile, wide(words.at(1)).c_str()) == 0)
      answer.value(static_cast<long long>(entry.th32ProcessID));
  }
  answer.close(']');
}

void memory(const Words& words, Json& answer) {
  const Handle target = process(words, PROCESS_QUERY_INFORMATION | PROCESS_VM_READ);
  PROCESS_MEMORY_COUNTERS_EX counters{};
  if (GetProcessMemoryInfo(target.get(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters),
                           sizeof(counters)) == FALSE)
    fail("asking for the memory");
  answer.value(static_cast<long long>(counters.PrivateUsage));
}

void terminate(const Words& words, Json& answer) {
  const Handle target = process(words, PROCESS_TERMINATE | SYNCHRONIZE);
  if (TerminateProcess(target.get(), 99) == FALSE) fail("ending the process");
  answer.value(WaitForSingleObject(target.get(), kPatience) == WAIT_OBJECT_0);
}

/// Has the process load a DLL: inject PROCESS FILE
void inject(const Words& words, Json& answer) {
  const Handle target = process(words, PROCESS_ALL_ACCESS);
  const std::wstring file = wide(words.at(2));
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

/// What the agent within a process answers to a request.
std::string askAgent(const Words& words, const std::string& request) {
  const Handle target = process(words, PROCESS_QUERY_INFORMATION | SYNCHRONIZE);
  const Handle pipe = connectToAgent(target.get());
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
  return json;
}

/// Open popups of a process that has the agent: menus PROCESS
void menus(const Words& words, Json& answer) {
  answer.raw(askAgent(words, "menus"));
}

/// A window's controls and the room for their texts: measure PROCESS WINDOW
void measure(const Words& words, Json& answer) {
  answer.raw(askAgent(words, "measure " + words.at(2)));
}

/// A text value under HKEY_LOCAL_MACHINE or HKEY_CURRENT_USER: regset HKLM KEY NAME TEXT
void regset(const Words& words, Json& answer) {
  const HKEY root = words.at(1) == "HKLM" ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
  const std::wstring text = wide(words.at(4));
  const LSTATUS status =
      RegSetKeyValueW(root, wide(words.at(2)).c_str(), wide(words.at(3)).c_str(), REG_SZ,
                      text.c_str(), static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
  if (status != ERROR_SUCCESS) throw std::runtime_error("registry error " + std::to_string(status));
  answer.value(true);
}

struct Entry {
  const char* name;
  Command command;
};
constexpr Entry kCommands[] = {
    {"processes", processes}, {"memory", memory},   {"terminate", terminate}, {"inject", inject},
    {"menus", menus},         {"measure", measure}, {"regset", regset}};

}  // namespace

Command processCommand(const std::string& name) {
  for (const Entry& entry : kCommands)
    if (name == entry.name) return entry.command;
  return nullptr;
}

}  // namespace desktop_test
