#pragma once

#include <deque>
#include <string>
#include <thread>

#include "base/mutex.h"

namespace base {

/// Replaces files whole without making its owner wait for the disk: in order, as soon
/// as there is a pause, on a thread that lives only while there is something to write.
/// For files that can be fetched again: what cannot be written leaves the old file, and
/// nobody is told. Where there is no memory to write, it is tried again for a while.
class FileWriter {
 public:
  FileWriter() = default;
  /// Writes what is left.
  ~FileWriter();
  FileWriter(const FileWriter&) = delete;
  FileWriter& operator=(const FileWriter&) = delete;

  /// May run before or after this returns, but before any later one.
  void replace(std::string path, std::string contents);
  /// Waits until everything is written.
  void finish();

 private:
  struct Job {
    std::string path;
    std::string contents;
  };
  void run();
  bool waitForJobs() REQUIRES(mutex_);
  void waitForPause() REQUIRES(mutex_);
  void writeFirst() REQUIRES(mutex_);
  void writeAll() REQUIRES(mutex_);

  Mutex mutex_;
  Condition changed_;
  std::deque<Job> jobs_ GUARDED_BY(mutex_);  ///< the first stays while it is written
  bool hurry_ GUARDED_BY(mutex_) = false;    ///< somebody waits for it
  bool ending_ GUARDED_BY(mutex_) = false;
  bool has_thread_ GUARDED_BY(mutex_) = false;  ///< false when it is about to end
  std::thread thread_;                          // the owner's
};

}  // namespace base
