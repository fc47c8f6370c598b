#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "base/files.h"

namespace base::system {
namespace {

std::string native(const std::string& path) {
  std::string slashed = path;
  std::replace(slashed.begin(), slashed.end(), '\\', '/');
  return slashed;
}

class Descriptor {
 public:
  Descriptor(const std::string& path, int flags)
      : fd_(::open(native(path).c_str(), flags | O_CLOEXEC, 0644)) {}
  ~Descriptor() {
    if (fd_ >= 0) ::close(fd_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  explicit operator bool() const { return fd_ >= 0; }
  int get() const { return fd_; }

 private:
  int fd_;
};

}  // namespace

bool isFile(const std::string& path) {
  struct stat info = {};
  return ::stat(native(path).c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

bool isFolder(const std::string& path) {
  struct stat info = {};
  return ::stat(native(path).c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool makeFolder(const std::string& path) {
  return ::mkdir(native(path).c_str(), 0755) == 0;
}

std::vector<std::string> filesIn(const std::string& folder) {
  std::vector<std::string> names;
  DIR* const open = ::opendir(native(folder).c_str());
  if (open == nullptr) return names;
  while (const dirent* const entry = ::readdir(open)) {
    if (isFile(folder + '/' + entry->d_name)) names.emplace_back(entry->d_name);
  }
  ::closedir(open);
  return names;
}

bool remove(const std::string& path) {
  return ::unlink(native(path).c_str()) == 0;
}

std::optional<std::string> read(const std::string& path, std::size_t largest) {
  const Descriptor file(path, O_RDONLY);
  struct stat info = {};
  if (!file || ::fstat(file.get(), &info) != 0 || !S_ISREG(info.st_mode)) return std::nullopt;
  if (static_cast<std::size_t>(info.st_size) > largest) return std::nullopt;
  std::string contents(static_cast<std::size_t>(info.st_size), '\0');
  std::size_t have = 0;
  while (have < contents.size()) {
    const auto got = ::read(file.get(), contents.data() + have, contents.size() - have);
    if (got < 0) return std::nullopt;
    if (got == 0) break;
    have += static_cast<std::size_t>(got);
  }
  contents.resize(have);
  return contents;
}

bool write(const std::string& path, std::string_view contents, Keep keep) {
  const Descriptor file(path, O_WRONLY | O_CREAT | O_TRUNC);
  if (!file) return false;
  while (!contents.empty()) {
    const auto wrote = ::write(file.get(), contents.data(), contents.size());
    if (wrote <= 0) return false;
    contents.remove_prefix(static_cast<std::size_t>(wrote));
  }
  return keep == Keep::through_kill || ::fsync(file.get()) == 0;
}

bool replace(const std::string& from, const std::string& to, Keep) {
  return ::rename(native(from).c_str(), native(to).c_str()) == 0;
}

}  // namespace base::system
