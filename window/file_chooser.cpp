#include "window/file_chooser.h"

#include <commdlg.h>

#include <algorithm>
#include <array>

#include "base/files.h"
#include "base/system_function_win.h"
#include "base/unique_handle_win.h"
#include "base/utf.h"

namespace window {
namespace {

using Library = base::UniqueHandle<HMODULE, FreeLibrary>;

/// Asked for only here: the library brings printing with it, which would hold up
/// every start.
bool askForFile(OPENFILENAMEW& question) {
  const Library library(LoadLibraryExW(L"comdlg32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
  if (!library) return false;
  const auto ask =
      base::systemFunction<decltype(&::GetOpenFileNameW)>(L"comdlg32.dll", "GetOpenFileNameW");
  return ask != nullptr && ask(&question) != FALSE;
}

}  // namespace

std::optional<std::string> chooseFile(HWND owner, std::string_view filter,
                                      std::string_view present) {
  std::wstring filters = base::toWide(filter) + L'|';
  std::replace(filters.begin(), filters.end(), L'|', L'\0');
  std::wstring folder;
  if (base::fileExists(std::string(present))) {
    folder = base::toWide(present.substr(0, present.rfind('\\') + 1));
  }
  std::array<wchar_t, 4096> file{};
  OPENFILENAMEW question{};
  question.lStructSize = sizeof(question);
  question.hwndOwner = owner;
  question.lpstrFilter = filters.c_str();
  question.lpstrFile = file.data();
  question.nMaxFile = static_cast<DWORD>(file.size());
  question.lpstrInitialDir = folder.empty() ? nullptr : folder.c_str();
  question.Flags = OFN_EXPLORER | OFN_FILEMUSTEXIST | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
  if (!askForFile(question)) return std::nullopt;
  return base::toNarrow(file.data());
}

bool isIconFile(const std::string& file) {
  const base::UniqueIcon icon(static_cast<HICON>(
      LoadImageW(nullptr, base::toWide(file).c_str(), IMAGE_ICON, 0, 0, LR_LOADFROMFILE)));
  return static_cast<bool>(icon);
}

}  // namespace window
