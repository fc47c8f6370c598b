#include "player/file_handle.h"

#include <windows.h>

#include "window/utf.h"

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

bool FileHandle::create(const std::string& path) {
  close();
  const std::wstring wide = window::toWide(path);
  if (isLink(wide)) return false;
  handle_ = reinterpret_cast<std::intptr_t>(CreateFileW(
      wide.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
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
