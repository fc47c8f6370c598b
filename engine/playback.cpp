#include "engine/playback.h"

#include <algorithm>

#include "engine/decoding.h"
#include "engine/resampler.h"

namespace engine {
namespace {

constexpr auto kDeviceRetry = std::chrono::milliseconds(1000);
// After a gap this much is gathered first, doubled with every further gap.
constexpr unsigned kFirstCushion = 500;
constexpr unsigned kLargestCushion = 4000;

}  // namespace

Playback::Playback(OutputFactory& outputs, const Interrupt& interrupt, DownloadBuffer& buffer)
    : outputs_(outputs), interrupt_(interrupt), buffer_(buffer), thread_([this] { run(); }) {}

Playback::~Playback() {
  cancel();
  join();
}

void Playback::join() {
  const Lock lock(join_mutex_);
  if (thread_.joinable()) thread_.join();
}

void Playback::play(Codec codec, std::vector<Codec> all, uint32_t bitrate) {
  const Lock lock(mutex_);
  if (codec_.functions != nullptr) return;
  codec_ = std::move(codec);
  codecs_ = std::move(all);
  bytes_per_second_ = bitrate / 8;
  changed_.notifyAll();
}

void Playback::cancel() {
  const Lock lock(mutex_);
  cancelled_ = true;
  changed_.notifyAll();
}

bool Playback::waitForPlay() {
  const Lock lock(mutex_);
  while (!cancelled_ && codec_.functions == nullptr) changed_.wait(mutex_);
  return !cancelled_;
}

void Playback::run() {
  openOutput();
  if (waitForPlay()) playSound();
  // Here and not with the object: only this thread may wait for a device.
  output_.reset();
}

void Playback::playSound() {
  reached_gain_ = gain_.load(std::memory_order_relaxed);
  cushion_milliseconds_ = kFirstCushion;

  Codec codec;
  std::vector<Codec> all;
  {
    const Lock lock(mutex_);
    codec = codec_;
    all = codecs_;
  }
  Decoding decoding(codec, std::move(all), buffer_,
                    [this](uint8_t* to, int room) { return feed(to, room); });
  std::unique_ptr<Resampler> resampler;
  unsigned made_for = 0;
  kestrel_sound sound;
  while (!interrupt_.isSet() && decoding.decode(&sound)) {
    if (!output_ && !openOutput()) {
      if (interrupt_.wait(kDeviceRetry)) break;
      continue;
    }
    if (!resampler || made_for != output_->rate()) {
      made_for = output_->rate();
      resampler = std::make_unique<Resampler>(made_for);
    }
    if (!emit(resampler->convert(sound))) output_.reset();
  }
  drain();
}

bool Playback::openOutput() {
  output_ = outputs_.open(interrupt_);
  return output_ != nullptr;
}

bool Playback::emit(std::span<float> samples) {
  applyGain(samples);
  const bool taken = output_->write(samples);
  sounding_ = true;
  pending_.store(taken ? output_->pendingMilliseconds() : 0, std::memory_order_relaxed);
  return taken;
}

// A straight ramp over each piece, since a jump would click.
void Playback::applyGain(std::span<float> samples) {
  const float target = gain_.load(std::memory_order_relaxed);
  if (target == 1.0f && reached_gain_ == 1.0f) return;
  const size_t frames = samples.size() / Output::kChannels;
  if (frames == 0) return;
  const float step = (target - reached_gain_) / static_cast<float>(frames);
  for (size_t i = 0; i < samples.size(); ++i) {
    samples[i] *= reached_gain_ + step * static_cast<float>(i / Output::kChannels + 1);
  }
  reached_gain_ = target;
}

// What the decoder reads. When the download falls behind, the device gets all there
// is; if it fell silent meanwhile, enough is gathered first that it does not stutter.
int Playback::feed(uint8_t* to, int room) {
  const DownloadBuffer::Level level = buffer_.level();
  if (sounding_ && level.unread() == 0 && !level.finished && output_) {
    output_->flush();
    buffer_.waitFilled(1);
    if (output_->pendingMilliseconds() == 0) refillAfterGap();
  }
  return buffer_.read(to, static_cast<size_t>(room));
}

void Playback::refillAfterGap() {
  pending_.store(0, std::memory_order_relaxed);
  buffer_.waitFilled(
      static_cast<size_t>(uint64_t{bytes_per_second_} * cushion_milliseconds_ / 1000));
  cushion_milliseconds_ = std::min(cushion_milliseconds_ * 2, kLargestCushion);
}

// Lets the end of a finished stream sound.
void Playback::drain() {
  if (!output_ || interrupt_.isSet()) return;
  output_->flush();
  interrupt_.wait(std::chrono::milliseconds(output_->pendingMilliseconds() + 100));
}

}  // namespace engine
