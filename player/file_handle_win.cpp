#include "player/file_handle.h"

#include <windows.h>

#include "base/utf.h"

namespace player {
namespace {

HANDLE native(std::intptr_t handle) {
  return reinterpret_cast<HANDLE>(handle);
}

// Not so the other reparse points: a file that a cloud keeps is a plain file to its user.
bool isLink(const std::wstring& path) {
  WIN32_FIND_DATAW found;
  const HANDLE search = FindFirstFileW(path.c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return false;
  FindClose(search);
  return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         IsReparseTagNameSurrogate(found.dwReserved0);
}

}  // namespace

bool FileHandle::open(const std::string& path, Mode mode) {
  close();
  const std::wstring wide = base::toWide(path);
  if (isLink(wide)) return false;
  const bool creates = mode == Mode::create;
  handle_ = reinterpret_cast<std::intptr_t>(
      CreateFileW(wide.c_str(), creates ? GENERIC_WRITE : FILE_APPEND_DATA, 0, nullptr,
                  creates ? CREATE_ALWAYS : OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (isOpen() && GetFileType(native(handle_)) != FILE_TYPE_DISK) close();
  return isOpen();
}

bool FileHandle::write(std::span<const std::byte> bytes) {
  DWORD written = 0;
  return WriteFile(native(handle_), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                   nullptr) != FALSE &&
         written == bytes.size();
}

bool FileHandle::flush() {
  return FlushFileBuffers(native(handle_)) != FALSE;
}

void FileHandle::close() {
  if (isOpen()) CloseHandle(native(handle_));
  handle_ = kInvalid;
}

}  // namespace player
