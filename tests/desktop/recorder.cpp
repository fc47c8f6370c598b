// Stands in for a listener's own player: writes the command line it was given
// into "recorded.txt" beside itself, whole or not at all.
#include <windows.h>

#include "base/utf.h"

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  wchar_t path[MAX_PATH];
  GetModuleFileNameW(nullptr, path, MAX_PATH);
  std::wstring folder(path);
  folder.resize(folder.rfind(L'\\') + 1);
  const std::string line = base::toNarrow(GetCommandLineW());
  const HANDLE file = CreateFileW((folder + L"recorded.new").c_str(), GENERIC_WRITE, 0, nullptr,
                                  CREATE_ALWAYS, 0, nullptr);
  DWORD written = 0;
  const bool done =
      WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr) != FALSE;
  CloseHandle(file);
  return done && MoveFileExW((folder + L"recorded.new").c_str(), (folder + L"recorded.txt").c_str(),
                             MOVEFILE_REPLACE_EXISTING) != FALSE
             ? 0
             : 1;
}
