#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "player/file_handle.h"

namespace player {

/// Writes recordings, one file after the other. A new file begins at the first
/// header of an MPEG-1 layer III frame, which is copied to its start.
/// One thread at a time.
class clsFileIo {
 public:
  /// Creates or overwrites. A failure leaves no file open.
  [[nodiscard]] bool OpenFile(const std::string& file_name);

  /// False if none was open.
  bool CloseFile();

  /// Opens the last file again to go on behind its end; false if it is gone.
  [[nodiscard]] bool ContinueFile();

  /// Appends a block of the stream. Nothing is written, and false returned, while
  /// the file is without a header and the block has none either; `SyncFound`
  /// tells of the file's first header and is set when it comes.
  [[nodiscard]] bool WriteBytes(std::span<const std::byte> block, bool& SyncFound);

 private:
  [[nodiscard]] bool writeFirstHeader(std::span<const std::byte> block);

  FileHandle file_;
  std::string file_name_;  // empty until the first successful open
};

}  // namespace player
