#pragma once

#include <atomic>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "base/mutex.h"
#include "player/recording_file.h"

namespace player {

/// Records the stream, title by title, into the recording folder. Titles come on
/// one of the library's threads, bytes on another, the switch and the end of a
/// stream on the program's.
class Recorder {
 public:
  /// `folder`: where recordings go; no trailing backslash.
  explicit Recorder(std::string folder) : folder_(std::move(folder)) {}

  /// Recording wanted.
  std::atomic<bool> recordflag = false;

  /// A new stream: nothing is recorded before its first title. If that is the last
  /// one's title still, its file goes on.
  void begin();
  /// The stream has ended: closes the file, and ignores what still arrives.
  void end();

  /// A title tag came. Never waits for the disk.
  void title(std::string_view CurrentTitle);

  /// Bytes of the stream, in order; opens, writes and closes files.
  void bytes(std::span<const std::byte> block);
  /// The server has ended the stream.
  void downloadEnded();

 private:
  /// What a title changes, and what a block of bytes goes by.
  struct State {
    std::string LastTitle;
    std::string RecordFile;
    bool FileOpen = false;
    bool SyncFound = false;
    bool ended = true;
    bool resumes = false;  ///< the file of the title was closed by the end of a stream
    unsigned changes = 0;  // counts what makes a block's own outcome outdated
  };

  [[nodiscard]] State state();
  void store(const State& outcome);
  void record(State& now, std::span<const std::byte> block) REQUIRES(file_mutex_);

  const std::string folder_;
  base::Mutex file_mutex_;  ///< held while the disk is written; taken before state_mutex_
  clsFileIo file_ GUARDED_BY(file_mutex_);
  base::Mutex state_mutex_;
  State state_ GUARDED_BY(state_mutex_);
};

}  // namespace player
