#include "player/file_handle.h"

#include <windows.h>

#include "window/utf.h"

namespace player {
namespace {

HANDLE native(std::intptr_t handle) {
  return reinterpret_cast<HANDLE>(handle);
}

}  // namespace

bool FileHandle::create(const std::string& path) {
  close();
  handle_ = reinterpret_cast<std::intptr_t>(CreateFileW(window::toWide(path).c_str(), GENERIC_WRITE,
                                                        0, nullptr, CREATE_ALWAYS,
                                                        FILE_ATTRIBUTE_NORMAL, nullptr));
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
