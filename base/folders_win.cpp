#include "base/folders_win.h"

#include <windows.h>
// Needs windows.h first.
#include <shlobj.h>

#include "base/unique_handle_win.h"
#include "base/utf.h"

namespace base {

std::string specialfolder(int csidl) {
  using UniqueIdList = UniqueHandle<LPITEMIDLIST, ILFree>;
  LPITEMIDLIST found = nullptr;
  if (FAILED(SHGetSpecialFolderLocation(nullptr, csidl, &found))) return {};
  const UniqueIdList list(found);
  wchar_t path[MAX_PATH] = {};
  if (SHGetPathFromIDListW(list.get(), path) == FALSE) return {};
  return toNarrow(path);
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
  return toNarrow(path.substr(0, path.find_last_of(L'\\')));
}

}  // namespace base
