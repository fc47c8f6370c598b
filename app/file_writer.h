#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

namespace app {

/// Replaces files whole without making its owner wait for the disk: in order, as soon
/// as there is a pause, on a thread that lives only while there is something to write.
/// For files that can be fetched again: what cannot be written leaves the old file, and
/// nobody is told.
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
  void waitForPause(std::unique_lock<std::mutex>& lock);

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Job> jobs_;     // guarded by mutex_; the first stays while it is written
  bool hurry_ = false;       // guarded by mutex_; somebody waits for it
  bool ending_ = false;      // guarded by mutex_
  bool has_thread_ = false;  // guarded by mutex_; false when it is about to end
  std::thread thread_;       // the owner's
};

}  // namespace app
