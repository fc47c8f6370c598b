#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

// Locks that clang's thread safety analysis understands; with other compilers the
// annotations vanish.
#if defined(__clang__)
#define THREADS_ANNOTATE(x) __attribute__((x))
#else
#define THREADS_ANNOTATE(x)
#endif
#define GUARDED_BY(m) THREADS_ANNOTATE(guarded_by(m))
#define REQUIRES(m) THREADS_ANNOTATE(requires_capability(m))

namespace base {

class THREADS_ANNOTATE(capability("mutex")) Mutex {
 public:
  void lock() THREADS_ANNOTATE(acquire_capability()) { mutex_.lock(); }
  void unlock() THREADS_ANNOTATE(release_capability()) { mutex_.unlock(); }

 private:
  friend class Condition;
  std::mutex mutex_;
};

class THREADS_ANNOTATE(scoped_lockable) Lock {
 public:
  explicit Lock(Mutex& mutex) THREADS_ANNOTATE(acquire_capability(mutex)) : mutex_(mutex) {
    mutex_.lock();
  }
  ~Lock() THREADS_ANNOTATE(release_capability()) { mutex_.unlock(); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  Mutex& mutex_;
};

/// A condition on what a Mutex guards. Waits may end early: ask again in a loop.
class Condition {
 public:
  void notifyAll() { condition_.notify_all(); }

  void wait(Mutex& mutex) REQUIRES(mutex) {
    std::unique_lock<std::mutex> held(mutex.mutex_, std::adopt_lock);
    condition_.wait(held);
    held.release();
  }

  /// False once `deadline` has passed.
  bool waitUntil(Mutex& mutex, std::chrono::steady_clock::time_point deadline) REQUIRES(mutex) {
    std::unique_lock<std::mutex> held(mutex.mutex_, std::adopt_lock);
    // The system clock, as thread sanitizers and older C libraries know it best.
    const auto left = deadline - std::chrono::steady_clock::now();
    const bool in_time =
        left.count() > 0 && condition_.wait_until(held, std::chrono::system_clock::now() + left) ==
                                std::cv_status::no_timeout;
    held.release();
    return in_time;
  }

 private:
  std::condition_variable condition_;
};

}  // namespace base
