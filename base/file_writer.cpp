#include "base/file_writer.h"

#include <chrono>
#include <exception>
#include <utility>

#include "base/files.h"

namespace base {
namespace {

using Clock = std::chrono::steady_clock;

// Longer than the next page of a reload takes.
constexpr std::chrono::seconds kIdle{2};
// What is asked for within this time belongs together: a disk that is busy would only
// hold up what follows.
constexpr std::chrono::milliseconds kPause{50};
// Without memory to write, others may give some back meanwhile.
constexpr std::chrono::milliseconds kRetry{200};
constexpr int kMostTries = 10;

// False: there was no memory for it.
bool write(const std::string& path, const std::string& contents) noexcept {
  try {
    (void)replaceFile(path, contents, Keep::through_kill);
    return true;
  } catch (...) {
    return false;
  }
}

}  // namespace

FileWriter::~FileWriter() {
  {
    const Lock lock(mutex_);
    ending_ = hurry_ = true;
    changed_.notifyAll();
  }
  if (thread_.joinable()) thread_.join();
}

void FileWriter::replace(std::string path, std::string contents) {
  Job job{std::move(path), std::move(contents)};
  const Lock lock(mutex_);
  jobs_.push_back(std::move(job));
  changed_.notifyAll();
  if (std::exchange(has_thread_, true)) return;
  if (thread_.joinable()) thread_.join();
  try {
    thread_ = std::thread([this] { run(); });
  } catch (const std::exception&) {  // no thread to be had, or no memory for it
    has_thread_ = false;
    writeAll();
  }
}

void FileWriter::finish() {
  const Lock lock(mutex_);
  hurry_ = true;
  changed_.notifyAll();
  while (!jobs_.empty()) changed_.wait(mutex_);
  hurry_ = false;
}

// False after a while without any.
bool FileWriter::waitForJobs() {
  const auto deadline = Clock::now() + kIdle;
  while (!ending_ && jobs_.empty() && changed_.waitUntil(mutex_, deadline)) continue;
  return !jobs_.empty();
}

void FileWriter::waitForPause() {
  for (std::size_t known = 0; !hurry_ && known != jobs_.size();) {
    known = jobs_.size();
    const auto deadline = Clock::now() + kPause;
    while (!hurry_ && known == jobs_.size() && changed_.waitUntil(mutex_, deadline)) continue;
  }
}

void FileWriter::writeFirst() {
  const Job& job = jobs_.front();  // stays where it is while others are added behind it
  for (int tries = 1;; ++tries) {
    mutex_.unlock();
    const bool done = write(job.path, job.contents);
    mutex_.lock();
    if (done || tries == kMostTries) break;
    const auto deadline = Clock::now() + kRetry;
    while (changed_.waitUntil(mutex_, deadline)) continue;
  }
  jobs_.pop_front();
}

void FileWriter::writeAll() {
  for (std::size_t left = jobs_.size(); left > 0; --left) writeFirst();
  changed_.notifyAll();
}

void FileWriter::run() {
  const Lock lock(mutex_);
  while (waitForJobs()) {
    waitForPause();
    writeAll();
  }
  has_thread_ = false;
}

}  // namespace base
