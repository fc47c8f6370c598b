#include "engine/engine.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace engine {
namespace {

// Each has a thread and a device's queue.
constexpr size_t kMostFading = 1;

}  // namespace

Engine& instance() {
  // Never destroyed: when a process ends, threads may be gone that a destructor
  // would wait for.
  static Engine* const engine = new Engine(makeSystemOutput());
  return *engine;
}

int Engine::init(int device) {
  // Whether there is a loudspeaker now says nothing about later: it is looked for
  // whenever a stream opens.
  if (device != -1) return BASS_ERROR_DEVICE;
  const base::Lock lock(mutex_);
  if (network_) return BASS_ERROR_ALREADY;
  network_ = std::make_unique<NetworkStart>();
  return BASS_OK;
}

int Engine::free() {
  Streams all;
  {
    const base::Lock lock(mutex_);
    if (!network_) return BASS_ERROR_INIT;
    for (auto& [handle, stream] : streams_) all.push_back(std::move(stream));
    streams_.clear();
    all.insert(all.end(), opening_.begin(), opening_.end());
  }
  for (const auto& stream : all) stream->stop();
  for (auto& stream : all) release(std::move(stream));
  releaseLeftOver(Wait::yes);
  const base::Lock lock(mutex_);
  network_.reset();
  return BASS_OK;
}

bool Engine::setConfig(BASS_DWORD option, BASS_DWORD value, BASS_DWORD& previous) {
  const base::Lock lock(mutex_);
  switch (option) {
    case BASS_CONFIG_MAXVOL:
      if (value == 0) return false;
      previous = std::exchange(max_volume_, value);
      return true;
    case BASS_CONFIG_NET_PREBUF:
      previous = std::exchange(prebuffer_percent_, value);
      return true;
    default:
      return false;
  }
}

int Engine::createStream(const char* url, Listener listener, HSTREAM& handle) {
  releaseLeftOver(Wait::no);
  const auto parsed = parseUrl(url);
  if (!parsed) return BASS_ERROR_ILLPARAM;
  BASS_DWORD prebuffer = 0;
  {
    const base::Lock lock(mutex_);
    if (!network_) return BASS_ERROR_INIT;
    prebuffer = prebuffer_percent_;
  }
  const auto stream = std::make_shared<Stream>(*parsed, listener, *outputs_);
  int code = startOpening(stream);
  limitFading();
  if (code == BASS_OK) code = stream->open(codecs_.all());
  if (code == BASS_OK && prebuffer != 0) stream->prebuffer(prebuffer);
  code = endOpening(stream, code, handle);
  if (code != BASS_OK) stream->close();
  return code;
}

int Engine::startOpening(const std::shared_ptr<Stream>& stream) {
  const base::Lock lock(mutex_);
  if (!network_) return BASS_ERROR_INIT;
  opening_.push_back(stream);
  return BASS_OK;
}

int Engine::endOpening(const std::shared_ptr<Stream>& stream, int code, HSTREAM& handle) {
  const base::Lock lock(mutex_);
  std::erase(opening_, stream);
  if (!network_) return BASS_ERROR_INIT;
  if (code != BASS_OK) return code;
  handle = ++last_handle_;
  streams_.emplace(handle, stream);
  return BASS_OK;
}

std::shared_ptr<Stream> Engine::find(HSTREAM handle) {
  const base::Lock lock(mutex_);
  const auto found = streams_.find(handle);
  return found == streams_.end() ? nullptr : found->second;
}

int Engine::freeStream(HSTREAM handle) {
  std::shared_ptr<Stream> stream;
  {
    const base::Lock lock(mutex_);
    const auto found = streams_.find(handle);
    if (found == streams_.end()) return BASS_ERROR_HANDLE;
    stream = std::move(found->second);
    streams_.erase(found);
  }
  stream->stop();
  release(std::move(stream));
  releaseLeftOver(Wait::no);
  return BASS_OK;
}

void Engine::release(std::shared_ptr<Stream> stream) {
  if (!stream->isOwnThread()) stream->close();
  const base::Lock lock(mutex_);
  left_over_.push_back(std::move(stream));
}

// Whoever frees or opens a stream is not kept waiting for the sound of an old one.
void Engine::releaseLeftOver(Wait wait) {
  Streams free_now;
  {
    const base::Lock lock(mutex_);
    const auto kept = std::stable_partition(
        left_over_.begin(), left_over_.end(), [wait](const std::shared_ptr<Stream>& stream) {
          return stream->isOwnThread() || (wait == Wait::no && !stream->isOver());
        });
    free_now.assign(std::move_iterator(kept), std::move_iterator(left_over_.end()));
    left_over_.erase(kept, left_over_.end());
  }
  for (const auto& stream : free_now) stream->join();
}

// Fast changes of the station: no more than the last one's sound fades while the next
// one opens.
void Engine::limitFading() {
  Streams fading;
  {
    const base::Lock lock(mutex_);
    std::copy_if(left_over_.begin(), left_over_.end(), std::back_inserter(fading),
                 [](const std::shared_ptr<Stream>& stream) { return !stream->isOver(); });
  }
  for (size_t i = 0; i + kMostFading < fading.size(); ++i) fading[i]->waitForSilence();
}

int Engine::stopStream(HSTREAM handle) {
  if (const auto stream = find(handle)) {
    stream->stop();
    return BASS_OK;
  }
  Streams opening;
  {
    const base::Lock lock(mutex_);
    opening = opening_;
  }
  for (const auto& stream : opening) stream->stop();
  return BASS_ERROR_HANDLE;
}

int Engine::setVolume(HSTREAM handle, int volume) {
  const auto stream = find(handle);
  if (!stream) return BASS_ERROR_HANDLE;
  const base::Lock lock(mutex_);
  if (volume < 0 || static_cast<BASS_DWORD>(volume) > max_volume_) return BASS_ERROR_ILLPARAM;
  stream->setVolume(static_cast<float>(volume) / static_cast<float>(max_volume_));
  return BASS_OK;
}

int Engine::setSync(HSTREAM handle, BASS_DWORD type, SYNCPROC* proc, uintptr_t user, HSYNC& sync) {
  const auto stream = find(handle);
  if (!stream) return BASS_ERROR_HANDLE;
  if (type != BASS_SYNC_META) return BASS_ERROR_ILLTYPE;
  if (proc == nullptr) return BASS_ERROR_ILLPARAM;
  {
    const base::Lock lock(mutex_);
    sync = ++last_handle_;
  }
  stream->setTitleSync(sync, handle, proc, user);
  return BASS_OK;
}

}  // namespace engine
