#include "app/file_writer.h"

#include <chrono>
#include <system_error>
#include <utility>

#include "app/files.h"

namespace app {
namespace {

// Longer than the next page of a reload takes.
constexpr std::chrono::seconds kIdle{2};

void write(const std::string& path, const std::string& contents) {
  (void)replaceFile(path, contents, Keep::through_kill);
}

}  // namespace

FileWriter::~FileWriter() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
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
  changed_.wait(lock, [this] { return jobs_.empty(); });
}

void FileWriter::run() {
  std::unique_lock lock(mutex_);
  while (changed_.wait_for(lock, kIdle, [this] { return ending_ || !jobs_.empty(); }) &&
         !jobs_.empty()) {
    const Job& job = jobs_.front();  // stays where it is while others are added behind it
    lock.unlock();
    write(job.path, job.contents);
    lock.lock();
    jobs_.pop_front();
    changed_.notify_all();
  }
  has_thread_ = false;
}

}  // namespace app
