#include "base/files.h"

#include <algorithm>
#include <new>

namespace base {

bool fileExists(const std::string& path) {
  return system::isFile(path);
}

bool folderExists(const std::string& path) {
  return system::isFolder(path);
}

bool makeFolder(const std::string& path) {
  return folderExists(path) || system::makeFolder(path);
}

std::vector<std::string> filesIn(const std::string& folder) {
  return system::filesIn(folder);
}

bool removeFile(const std::string& path) {
  return !fileExists(path) || system::remove(path);
}

std::optional<std::string> readWhole(const std::string& path, std::size_t largest) {
  try {
    return system::read(path, largest);
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
}

bool replaceFile(const std::string& path, std::string_view contents, Keep keep) {
  const std::string beside = path + ".new";
  if (system::write(beside, contents, keep) && system::replace(beside, path, keep)) return true;
  removeFile(beside);
  return false;
}

bool moveFile(const std::string& from, const std::string& to) {
  return system::replace(from, to, Keep::through_power_cut);
}

bool copyFile(const std::string& from, const std::string& to) {
  const auto contents = readWhole(from);
  return contents && replaceFile(to, *contents);
}

bool Lines::next(std::string_view& line) {
  if (rest_.empty()) return false;
  const auto stop =
      std::find_if(rest_.begin(), rest_.end(), [](char c) { return c == '\n' || c == '\r'; });
  const auto end =
      stop == rest_.end() ? rest_.npos : static_cast<std::size_t>(stop - rest_.begin());
  line = rest_.substr(0, end);
  if (end == rest_.npos) {
    rest_ = {};
    return true;
  }
  const bool crlf = rest_[end] == '\r' && end + 1 < rest_.size() && rest_[end + 1] == '\n';
  rest_.remove_prefix(end + (crlf ? 2 : 1));
  return true;
}

}  // namespace base
