#include "window/ui_queue.h"

#include <utility>

namespace window {
namespace {

constexpr UINT kRunPosted = WM_APP + 1;

}  // namespace

UiQueue::UiQueue() {
  Creation creation{L"KestrelUiQueue", {}};
  creation.owner = HWND_MESSAGE;
  create(creation);
}

UiQueue::~UiQueue() {
  close();
}

void UiQueue::post(std::function<void()> task) {
  const std::scoped_lock lock(mutex_);
  if (closed_) return;
  tasks_.push_back(std::move(task));
  announce();
}

void UiQueue::close() {
  std::deque<std::function<void()>> dropped;  // destroyed outside the lock
  const std::scoped_lock lock(mutex_);
  closed_ = true;
  dropped.swap(tasks_);
}

std::optional<LRESULT> UiQueue::onMessage(UINT message, WPARAM, LPARAM) {
  if (message != kRunPosted) return std::nullopt;
  if (const auto task = takeNext()) task();
  return 0;
}

std::function<void()> UiQueue::takeNext() {
  const std::scoped_lock lock(mutex_);
  announced_ = false;
  if (tasks_.empty()) return nullptr;
  std::function<void()> task = std::move(tasks_.front());
  tasks_.pop_front();
  // Announced before the task runs: it may throw, or open a message box, in whose
  // loop the others get their turn.
  if (!tasks_.empty()) announce();
  return task;
}

void UiQueue::announce() {
  // A full message queue refuses; the next post announces again.
  if (!announced_) announced_ = PostMessageW(handle(), kRunPosted, 0, 0) != FALSE;
}

}  // namespace window
