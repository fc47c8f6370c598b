#include "dialogs/startup_shortcut_win.h"

#include <windows.h>

#include <shlobj.h>

#include <array>
#include <string>

#include "base/com_win.h"
#include "base/folders_win.h"
#include "base/utf.h"

namespace dialogs {
namespace {

/// A shell link and its file.
struct Link {
  base::ComScope com;
  base::ComPointer<IShellLinkW> shell;
  base::ComPointer<IPersistFile> file;
  bool made = SUCCEEDED(CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER,
                                         IID_IShellLinkW, shell.outVoid())) &&
              SUCCEEDED(shell->QueryInterface(IID_IPersistFile, file.outVoid()));
};

/// Empty without a Startup folder.
std::wstring shortcutPath() {
  const std::string folder = base::specialfolder(CSIDL_STARTUP);
  return folder.empty() ? L"" : base::toWide(folder) + L"\\Kestrel.lnk";
}

std::wstring programPath() {
  return base::toWide(base::programFolder()) + L"\\Kestrel.exe";
}

}  // namespace

bool startsWithWindows() {
  const std::wstring path = shortcutPath();
  if (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) return false;
  const Link link;
  std::array<wchar_t, MAX_PATH> target{};
  if (!link.made || FAILED(link.file->Load(path.c_str(), STGM_READ)) ||
      FAILED(link.shell->GetPath(target.data(), MAX_PATH, nullptr, 0))) {
    return false;
  }
  // Another copy's shortcut starts that one.
  return lstrcmpiW(target.data(), programPath().c_str()) == 0;
}

bool setStartsWithWindows(bool on) {
  const std::wstring path = shortcutPath();
  if (path.empty()) return false;
  if (!on) return DeleteFileW(path.c_str()) != FALSE || GetLastError() == ERROR_FILE_NOT_FOUND;
  const Link link;
  if (!link.made) return false;
  return SUCCEEDED(link.shell->SetPath(programPath().c_str())) &&
         SUCCEEDED(link.shell->SetArguments(L"-nos")) &&
         SUCCEEDED(link.shell->SetWorkingDirectory(base::toWide(base::programFolder()).c_str())) &&
         SUCCEEDED(link.file->Save(path.c_str(), TRUE));
}

}  // namespace dialogs
