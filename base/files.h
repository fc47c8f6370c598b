#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Files by 8-bit paths with "\" between the parts (natively they become "/").
/// Nothing throws; what can fail says so by its result.
namespace base {

/// The largest file that is read: far more than any list a user can have made,
/// and what a menu of its records takes still fits into a 32-bit program.
inline constexpr std::size_t kLargestFile = std::size_t{16} << 20;

[[nodiscard]] bool fileExists(const std::string& path);
[[nodiscard]] bool folderExists(const std::string& path);
/// One level; true also when it is there already.
bool makeFolder(const std::string& path);
/// Names of the files in a folder, in no order; none when it is missing.
[[nodiscard]] std::vector<std::string> filesIn(const std::string& folder);
/// True when the file is gone afterwards.
bool removeFile(const std::string& path);

/// All bytes of the file; nothing when it is missing, unreadable, larger than
/// `largest` or than the memory.
[[nodiscard]] std::optional<std::string> readWhole(const std::string& path,
                                                   std::size_t largest = kLargestFile);

/// How much a file must outlive. Flushing holds the user up while the disk works.
enum class Keep {
  through_power_cut,  ///< flushed to the disk: what is the user's own
  through_kill,       ///< left to the system: what can be fetched again
};

/// Replaces the file's contents as a whole: written beside it and then put in its
/// place. When it fails, the old file is untouched.
[[nodiscard]] bool replaceFile(const std::string& path, std::string_view contents,
                               Keep keep = Keep::through_power_cut);

/// Overwrites `to`, as replaceFile() does.
[[nodiscard]] bool copyFile(const std::string& from, const std::string& to);
/// Renames a file of any size, in place of `to`.
[[nodiscard]] bool moveFile(const std::string& from, const std::string& to);

/// Takes lines off the front of a text; they end at CR, LF or CR LF, the last
/// one also at the end of the text.
class Lines {
 public:
  explicit Lines(std::string_view text) : rest_(text) {}
  /// False at the end.
  [[nodiscard]] bool next(std::string_view& line);

 private:
  std::string_view rest_;
};

namespace system {  // the calls that differ, in files_win.cpp and files_posix.cpp

bool isFile(const std::string& path);
bool isFolder(const std::string& path);
bool makeFolder(const std::string& path);
std::vector<std::string> filesIn(const std::string& folder);
bool remove(const std::string& path);
/// May throw std::bad_alloc.
std::optional<std::string> read(const std::string& path, std::size_t largest);
/// Creates or overwrites, and writes all.
bool write(const std::string& path, std::string_view contents, Keep keep);
/// Puts `from` in the place of `to` in one step.
bool replace(const std::string& from, const std::string& to, Keep keep);

}  // namespace system
}  // namespace base
