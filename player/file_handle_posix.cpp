#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "player/file_handle.h"

namespace player {
namespace {

int native(std::intptr_t handle) {
  return static_cast<int>(handle);
}

}  // namespace

bool FileHandle::open(const std::string& path, Mode mode) {
  close();
  std::string native_path = path;
  std::replace(native_path.begin(), native_path.end(), '\\', '/');
  // Without O_NONBLOCK, a pipe would be waited for.
  const int how = mode == Mode::create ? O_CREAT | O_TRUNC : O_APPEND;
  handle_ = ::open(native_path.c_str(), O_WRONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | how, 0666);
  struct stat status = {};
  if (isOpen() && (fstat(native(handle_), &status) != 0 || !S_ISREG(status.st_mode))) close();
  return isOpen();
}

bool FileHandle::write(std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(native(handle_), bytes.data(), bytes.size());
    if (written <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
  return true;
}

bool FileHandle::flush() {
  // Some file systems have nothing to flush, and say so.
  ::fdatasync(native(handle_));
  return true;
}

void FileHandle::close() {
  if (isOpen()) ::close(native(handle_));
  handle_ = kInvalid;
}

}  // namespace player
