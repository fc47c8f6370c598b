#include "player/recording_file.h"

#include <array>

namespace player {

bool clsFileIo::OpenFile(const std::string& file_name) {
  if (!file_.create(file_name)) return false;
  file_name_ = file_name;
  return true;
}

bool clsFileIo::CloseFile() {
  if (file_name_.empty() || !file_.isOpen()) return false;
  file_.close();
  return true;
}

bool clsFileIo::ContinueFile() {
  return !file_name_.empty() && file_.append(file_name_);
}

bool clsFileIo::WriteBytes(std::span<const std::byte> block, bool& SyncFound) {
  if (file_name_.empty() || !file_.isOpen()) return false;
  if (!SyncFound) {
    SyncFound = writeFirstHeader(block);
    if (!SyncFound) return false;
    static_cast<void>(file_.flush());
  }
  return file_.write(block) && file_.flush();
}

bool clsFileIo::writeFirstHeader(std::span<const std::byte> block) {
  constexpr std::byte kSync{0xff};
  constexpr std::byte kLayer3{0xfb};  // MPEG-1 layer III without a checksum
  // A header at the very beginning does not count: it may be the tail of one that
  // the last file began with.
  for (std::size_t i = 1; i + 1 < block.size(); ++i) {
    if (block[i] != kSync || block[i + 1] != kLayer3) continue;
    const std::byte third = i + 2 < block.size() ? block[i + 2] : std::byte{0};
    const std::array header{kSync, kLayer3, third};
    if (file_.write(header)) return true;
  }
  return false;
}

}  // namespace player
