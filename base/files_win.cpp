#include <windows.h>

#include <algorithm>

#include "base/files.h"
#include "base/utf.h"

namespace base::system {
namespace {

class File {
 public:
  File(const std::string& path, DWORD access, DWORD share, DWORD disposition)
      : handle_(CreateFileW(toWide(path).c_str(), access, share, nullptr, disposition,
                            FILE_ATTRIBUTE_NORMAL, nullptr)) {}
  ~File() {
    if (*this) CloseHandle(handle_);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE get() const { return handle_; }

 private:
  HANDLE handle_;
};

constexpr std::size_t kBlock = 1u << 20;  // sizes of one call are 32-bit

DWORD attributes(const std::string& path) {
  return GetFileAttributesW(toWide(path).c_str());
}

}  // namespace

bool isFile(const std::string& path) {
  const DWORD found = attributes(path);
  return found != INVALID_FILE_ATTRIBUTES && (found & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool isFolder(const std::string& path) {
  const DWORD found = attributes(path);
  return found != INVALID_FILE_ATTRIBUTES && (found & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool makeFolder(const std::string& path) {
  return CreateDirectoryW(toWide(path).c_str(), nullptr) != 0;
}

std::vector<std::string> filesIn(const std::string& folder) {
  std::vector<std::string> names;
  WIN32_FIND_DATAW found = {};
  const HANDLE search = FindFirstFileW(toWide(folder + "\\*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return names;
  do {
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) continue;
    names.push_back(toNarrow(found.cFileName));
  } while (FindNextFileW(search, &found) != 0);
  FindClose(search);
  return names;
}

bool remove(const std::string& path) {
  return DeleteFileW(toWide(path).c_str()) != 0;
}

std::optional<std::string> read(const std::string& path, std::size_t largest) {
  const File file(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                  OPEN_EXISTING);
  LARGE_INTEGER size = {};
  if (!file || !GetFileSizeEx(file.get(), &size)) return std::nullopt;
  if (static_cast<unsigned long long>(size.QuadPart) > largest) return std::nullopt;
  std::string contents(static_cast<std::size_t>(size.QuadPart), '\0');
  std::size_t have = 0;
  while (have < contents.size()) {
    const auto wanted = static_cast<DWORD>(std::min(kBlock, contents.size() - have));
    DWORD got = 0;
    if (!ReadFile(file.get(), contents.data() + have, wanted, &got, nullptr)) return std::nullopt;
    if (got == 0) break;
    have += got;
  }
  contents.resize(have);
  return contents;
}

bool write(const std::string& path, std::string_view contents, Keep keep) {
  const File file(path, GENERIC_WRITE, 0, CREATE_ALWAYS);
  if (!file) return false;
  while (!contents.empty()) {
    DWORD wrote = 0;
    const auto block = static_cast<DWORD>(std::min(kBlock, contents.size()));
    if (!WriteFile(file.get(), contents.data(), block, &wrote, nullptr) || wrote == 0) return false;
    contents.remove_prefix(wrote);
  }
  return keep == Keep::through_kill || FlushFileBuffers(file.get()) != 0;
}

bool replace(const std::string& from, const std::string& to, Keep keep) {
  const DWORD through = keep == Keep::through_power_cut ? MOVEFILE_WRITE_THROUGH : 0;
  return MoveFileExW(toWide(from).c_str(), toWide(to).c_str(),
                     MOVEFILE_REPLACE_EXISTING | through) != 0;
}

}  // namespace base::system
