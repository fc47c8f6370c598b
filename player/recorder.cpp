#include "player/recorder.h"

#include <utility>

#include "player/record_name.h"

namespace player {

void Recorder::begin() {
  const base::Lock file_lock(file_mutex_);
  file_.CloseFile();
  const base::Lock lock(state_mutex_);
  state_.RecordFile.clear();
  state_.resumes = state_.FileOpen;
  state_.ended = false;
  ++state_.changes;
}

void Recorder::end() {
  {
    const base::Lock lock(state_mutex_);
    state_.ended = true;
    ++state_.changes;
  }
  const base::Lock file_lock(file_mutex_);
  file_.CloseFile();
}

void Recorder::title(std::string_view CurrentTitle) {
  std::string path = recordPath(folder_, CurrentTitle);
  const base::Lock lock(state_mutex_);
  if (CurrentTitle != state_.LastTitle) {
    state_.LastTitle = CurrentTitle;
    state_.FileOpen = false;
    state_.SyncFound = false;
    state_.resumes = false;
    ++state_.changes;
  }
  state_.RecordFile = std::move(path);
}

void Recorder::bytes(std::span<const std::byte> block) {
  const base::Lock file_lock(file_mutex_);
  State now = state();
  if (now.ended) return;
  record(now, block);
  store(now);
}

void Recorder::record(State& now, std::span<const std::byte> block) {
  if (!recordflag) {
    now.FileOpen = false;
    file_.CloseFile();
    return;
  }
  if (!now.FileOpen) file_.CloseFile();
  if (now.RecordFile.empty()) return;
  if (now.FileOpen && std::exchange(now.resumes, false) && !file_.ContinueFile()) {
    now.FileOpen = false;
    now.SyncFound = false;
  }
  if (!now.FileOpen) now.FileOpen = file_.OpenFile(now.RecordFile);
  if (!now.FileOpen) {
    now.SyncFound = false;
    return;
  }
  // What the disk does not take is lost; the next block may fare better.
  static_cast<void>(file_.WriteBytes(block, now.SyncFound));
}

void Recorder::downloadEnded() {
  const base::Lock file_lock(file_mutex_);
  file_.CloseFile();
  State now = state();
  now.SyncFound = false;
  store(now);
}

Recorder::State Recorder::state() {
  const base::Lock lock(state_mutex_);
  return state_;
}

void Recorder::store(const State& outcome) {
  const base::Lock lock(state_mutex_);
  if (state_.changes != outcome.changes) return;  // a title came meanwhile: begin anew
  state_.FileOpen = outcome.FileOpen;
  state_.SyncFound = outcome.SyncFound;
  state_.resumes = outcome.resumes;
}

}  // namespace player
