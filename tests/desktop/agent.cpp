// The tests' eyes within the program: menus and fonts live in their own process's
// memory. On each connection to its pipe it reads a request, "menus", "resources" or
// "measure WINDOW", writes the answer as JSON and hangs up.
#include "agent.h"

#include <array>
#include <string>

namespace {

using namespace desktop_test;

std::string requestFrom(HANDLE pipe) {
  std::array<char, 64> request{};
  DWORD got = 0;
  ReadFile(pipe, request.data(), static_cast<DWORD>(request.size()), &got, nullptr);
  return {request.data(), got};
}

std::string answerTo(const std::string& request) {
  constexpr std::string_view kMeasure = "measure ";
  Json json;
  if (request.starts_with(kMeasure)) {
    const long long window = std::stoll(request.substr(kMeasure.size()));
    writeMeasures(json, reinterpret_cast<HWND>(static_cast<INT_PTR>(window)));
  } else if (request == "resources") {
    writeResources(json);
  } else {
    writePopups(json);
  }
  return json.text();
}

DWORD WINAPI answerForEver(void*) {
  const HANDLE pipe = CreateNamedPipeW(agentPipe(GetCurrentProcessId()).c_str(), PIPE_ACCESS_DUPLEX,
                                       PIPE_TYPE_BYTE | PIPE_WAIT, 1, 1 << 20, 1 << 10, 0, nullptr);
  while (pipe != INVALID_HANDLE_VALUE) {
    if (ConnectNamedPipe(pipe, nullptr) == FALSE && GetLastError() != ERROR_PIPE_CONNECTED) {
      if (GetLastError() != ERROR_NO_DATA) break;  // nobody there any more
      DisconnectNamedPipe(pipe);
      continue;
    }
    const std::string answer = answerTo(requestFrom(pipe));
    DWORD written = 0;
    WriteFile(pipe, answer.data(), static_cast<DWORD>(answer.size()), &written, nullptr);
    FlushFileBuffers(pipe);
    DisconnectNamedPipe(pipe);
  }
  return 0;
}

}  // namespace

BOOL WINAPI DllMain(HINSTANCE, DWORD reason, void*) {
  if (reason == DLL_PROCESS_ATTACH) {
    const HANDLE thread = CreateThread(nullptr, 0, answerForEver, nullptr, 0, nullptr);
    if (thread == nullptr) return FALSE;
    CloseHandle(thread);
  }
  return TRUE;
}
