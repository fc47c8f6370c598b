#include "app/file_writer.h"

#include <chrono>
#include <system_error>
#include <utility>

#include "app/files.h"

namespace app {
namespace {

// Longer than the next page of a reload takes.
constexpr std::chrono::seconds kIdle{2};
// What is asked for within this time belongs together: a disk that is busy would only
// hold up what follows.
constexpr std::chrono::milliseconds kPause{50};

void write(const std::string& path, const std::string& contents) {
  (void)replaceFile(path, contents, Keep::through_kill);
}

}  // namespace

FileWriter::~FileWriter() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = hurry_ = true;
    changed_.notify_all();
  }
  if (thread_.joinable()) thread_.join();
}

void FileWriter::replace(std::string path, std::string contents) {
  const std::lock_guard lock(mutex_);
  jobs_.push_back({std::move(path), std::move(contents)});
  changed_.notify_all();
  if (std::exchange(has_thread_, true)) return;
  if (thread_.joinable()) thread_.join();
  try {
    thread_ = std::thread([this] { run(); });
  } catch (const std::system_error&) {
    has_thread_ = false;
    write(jobs_.front().path, jobs_.front().contents);
    jobs_.pop_front();
  }
}

void FileWriter::finish() {
  std::unique_lock lock(mutex_);
  hurry_ = true;
  changed_.notify_all();
  changed_.wait(lock, [this] { return jobs_.empty(); });
  hurry_ = false;
}

void FileWriter::waitForPause(std::unique_lock<std::mutex>& lock) {
  std::size_t known = 0;
  while (!hurry_ && known != jobs_.size()) {
    known = jobs_.size();
    changed_.wait_for(lock, kPause, [&] { return hurry_ || known != jobs_.size(); });
  }
}

void FileWriter::run() {
  std::unique_lock lock(mutex_);
  while (changed_.wait_for(lock, kIdle, [this] { return ending_ || !jobs_.empty(); }) &&
         !jobs_.empty()) {
    waitForPause(lock);
    for (std::size_t left = jobs_.size(); left > 0; --left) {
      const Job& job = jobs_.front();  // stays where it is while others are added behind it
      lock.unlock();
      write(job.path, job.contents);
      lock.lock();
      jobs_.pop_front();
    }
    changed_.notify_all();
  }
  has_thread_ = false;
}

}  // namespace app
