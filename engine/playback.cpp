#include "engine/playback.h"

#include <algorithm>

#include "engine/decoding.h"
#include "engine/sound/output_silent.h"
#include "engine/sound/resampler.h"

namespace engine {
namespace {

constexpr auto kDeviceRetry = std::chrono::milliseconds(1000);
// So long before the device falls silent its last sound is handed over.
constexpr std::chrono::milliseconds kFadeTime(40);
// Of what is kept back, so much sounds after a stop.
constexpr unsigned kStopMilliseconds = 20;

}  // namespace

Playback::Playback(OutputFactory& outputs, const Interrupt& interrupt, DownloadBuffer& buffer)
    : outputs_(outputs), interrupt_(interrupt), buffer_(buffer), thread_([this] { run(); }) {}

Playback::~Playback() {
  cancel();
  join();
}

void Playback::join() {
  const base::Lock lock(join_mutex_);
  if (thread_.joinable()) thread_.join();
}

void Playback::play(Codec codec, std::vector<Codec> all, uint32_t bitrate) {
  const base::Lock lock(mutex_);
  if (codec_.functions != nullptr) return;
  codec_ = std::move(codec);
  codecs_ = std::move(all);
  bytes_per_second_ = bitrate / 8;
  changed_.notifyAll();
}

void Playback::cancel() {
  const base::Lock lock(mutex_);
  cancelled_ = true;
  changed_.notifyAll();
}

bool Playback::waitForPlay() {
  const base::Lock lock(mutex_);
  while (!cancelled_ && codec_.functions == nullptr) changed_.wait(mutex_);
  return !cancelled_;
}

void Playback::run() {
  try {
    openOutput();
  } catch (const std::exception&) {
    // Out of memory: the first sound asks for one again.
  }
  if (waitForPlay()) playSound();
  // Here and not with the object: only this thread may wait for a device.
  output_.reset();
  over_.store(true, std::memory_order_release);
}

void Playback::playSound() {
  for (bool over = false; !over;) {
    try {
      decodeAll();
      endSound();
      over = true;
    } catch (const std::exception&) {
      // Out of memory: the bytes that follow may fare better.
      over = interrupt_.wait(kMemoryRetry);
    }
  }
}

void Playback::decodeAll() {
  Codec codec;
  std::vector<Codec> all;
  {
    const base::Lock lock(mutex_);
    codec = codec_;
    all = codecs_;
  }
  Decoding decoding(codec, std::move(all), buffer_,
                    [this](uint8_t* to, int room) { return feed(to, room); });
  std::unique_ptr<Resampler> resampler;
  unsigned made_for = 0;
  kestrel_sound sound;
  while (!interrupt_.isSet() && decoding.decode(&sound)) {
    noteFormat(sound);
    if (!has_device_) openOutput();
    if (!resampler || made_for != output_->rate()) {
      made_for = output_->rate();
      resampler = std::make_unique<Resampler>(made_for);
    }
    emit(resampler->convert(sound));
  }
}

void Playback::noteFormat(const kestrel_sound& sound) {
  const base::Lock lock(mutex_);
  format_ = {sound.ctype, static_cast<uint32_t>(sound.rate), static_cast<uint32_t>(sound.channels),
             0};
}

kestrel_format Playback::format() {
  const base::Lock lock(mutex_);
  return format_;
}

// Without a device the sound goes nowhere, and the device is looked for every second.
void Playback::openOutput() {
  const auto now = Clock::now();
  if (output_ && now - last_look_ < kDeviceRetry) return;
  last_look_ = now;
  auto device = outputs_.open(interrupt_);
  has_device_ = device != nullptr;
  if (!device && output_) return;
  output_ = device ? std::move(device) : std::make_unique<SilentOutput>(interrupt_);
  held_.clear();
  gain_.restart();
}

void Playback::emit(std::span<float> samples) {
  if (samples.empty()) return;
  gain_.apply(samples, volume_.load(std::memory_order_relaxed), output_->rate());
  writeHeld();
  held_.insert(held_.end(), samples.begin(), samples.end());
}

void Playback::writeHeld() {
  if (held_.empty()) return;
  std::span<const float> left(held_);
  if (!output_->write(left)) {
    has_device_ = false;
    last_look_ = {};
    output_ = std::make_unique<SilentOutput>(interrupt_);
    left = {};
  }
  held_.erase(held_.begin(), held_.end() - static_cast<std::ptrdiff_t>(left.size()));
  pending_.store(output_->pendingMilliseconds(), std::memory_order_relaxed);
}

// The end of the sound for now.
void Playback::fadeHeld() {
  const size_t ramp = output_->rate() * Gain::kRampMilliseconds / 1000 * Output::kChannels;
  const std::span<float> held(held_);
  gain_.apply(held.last(std::min(ramp, held.size())), 0, output_->rate());
  gain_.restart();
}

// What the decoder reads. When the download falls behind, the device gets all there
// is; if it fell silent meanwhile, enough is gathered first that it does not stutter.
int Playback::feed(uint8_t* to, int room) {
  if (!held_.empty()) waitForBytes();
  return buffer_.read(to, static_cast<size_t>(room));
}

void Playback::waitForBytes() {
  const DownloadBuffer::Level level = buffer_.level();
  if (level.unread() != 0 || level.finished) return;
  output_->flush();
  const std::chrono::milliseconds pending(output_->pendingMilliseconds());
  if (buffer_.waitFilled(1, Clock::now() + std::max(pending - kFadeTime, kFadeTime))) return;
  if (buffer_.level().finished || interrupt_.isSet()) return;
  fadeHeld();
  writeHeld();
  output_->flush();
  buffer_.waitFilled(1);
  if (output_->pendingMilliseconds() == 0) refillAfterGap();
}

void Playback::refillAfterGap() {
  pending_.store(0, std::memory_order_relaxed);
  const auto cushion = static_cast<uint64_t>(cushion_.afterGap(Clock::now()).count());
  buffer_.waitFilled(static_cast<size_t>(bytes_per_second_ * cushion / 1000));
}

// Lets the end of a finished stream sound; one that is stopped ends at once, but
// without a click.
void Playback::endSound() {
  if (!output_ || held_.empty()) return;
  if (interrupt_.isSet()) {
    const size_t soon = output_->rate() * kStopMilliseconds / 1000 * Output::kChannels;
    held_.resize(std::min(held_.size(), soon));
    fadeHeld();
    output_->finish(held_);
  } else {
    fadeHeld();
    writeHeld();
    output_->flush();
    interrupt_.wait(std::chrono::milliseconds(output_->pendingMilliseconds() + 100));
  }
}

}  // namespace engine
