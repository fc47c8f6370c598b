#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace player {

/// A file that is being written, with the system's own calls: what has been
/// flushed is on the disk, and nobody else has the file open. Closed at the end.
class FileHandle {
 public:
  FileHandle() = default;
  ~FileHandle() { close(); }
  FileHandle(const FileHandle&) = delete;
  FileHandle& operator=(const FileHandle&) = delete;

  [[nodiscard]] bool isOpen() const { return handle_ != kInvalid; }

  /// Creates the file, or empties the one of that path (see app/files.h). Refuses a
  /// symbolic link, and whatever else is no plain file.
  [[nodiscard]] bool create(const std::string& path) { return open(path, Mode::create); }
  /// Opens a file that is there, with the same refusals, to write behind its end.
  [[nodiscard]] bool append(const std::string& path) { return open(path, Mode::append); }
  [[nodiscard]] bool write(std::span<const std::byte> bytes);
  [[nodiscard]] bool flush();
  void close();

 private:
  enum class Mode { create, append };
  bool open(const std::string& path, Mode mode);

  static constexpr std::intptr_t kInvalid = -1;
  std::intptr_t handle_ = kInvalid;
};

}  // namespace player
