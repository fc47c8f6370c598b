#include <pulse/error.h>
#include <pulse/simple.h>

#include <algorithm>
#include <thread>

#include "engine/sound/output.h"

namespace engine {
namespace {

constexpr unsigned kRate = 48000;
constexpr unsigned kQueueMilliseconds = 200;
// The server is given this much at a time, which bounds how long a write can hold.
constexpr size_t kStepSamples = kRate / 20 * Output::kChannels;

class PulseOutput final : public Output {
 public:
  PulseOutput(pa_simple* connection, const Interrupt& interrupt)
      : connection_(connection), interrupt_(interrupt) {}
  ~PulseOutput() override {
    pa_simple_flush(connection_, nullptr);
    pa_simple_free(connection_);
  }
  PulseOutput(const PulseOutput&) = delete;
  PulseOutput& operator=(const PulseOutput&) = delete;

  unsigned rate() const override { return kRate; }

  bool write(std::span<const float>& samples) override {
    while (!samples.empty() && !interrupt_.isSet()) {
      const auto step = samples.first(std::min(samples.size(), kStepSamples));
      if (pa_simple_write(connection_, step.data(), step.size_bytes(), nullptr) < 0) return false;
      samples = samples.subspan(step.size());
    }
    return true;
  }

  void flush() override {}

  unsigned pendingMilliseconds() override {
    return static_cast<unsigned>(pa_simple_get_latency(connection_, nullptr) / 1000);
  }

  void finish(std::span<const float> last) override {
    if (!last.empty()) pa_simple_write(connection_, last.data(), last.size_bytes(), nullptr);
    const std::chrono::milliseconds left(pendingMilliseconds());
    std::this_thread::sleep_for(std::min(left, kLongestEnd));
  }

 private:
  pa_simple* connection_;
  const Interrupt& interrupt_;
};

class PulseFactory final : public OutputFactory {
 public:
  std::unique_ptr<Output> open(const Interrupt& interrupt) override {
    const pa_sample_spec spec = {PA_SAMPLE_FLOAT32LE, kRate, Output::kChannels};
    const auto bytes = static_cast<uint32_t>(pa_usec_to_bytes(kQueueMilliseconds * 1000u, &spec));
    const auto whatever = static_cast<uint32_t>(-1);
    // Starts with the first frame, at first and after a gap. With none at all the server
    // would go on meanwhile and drop what comes later as too late.
    const auto frame = static_cast<uint32_t>(pa_frame_size(&spec));
    const pa_buffer_attr buffer = {whatever, bytes, frame, whatever, whatever};
    pa_simple* connection = pa_simple_new(nullptr, "Kestrel", PA_STREAM_PLAYBACK, nullptr, "radio",
                                          &spec, nullptr, &buffer, nullptr);
    if (connection == nullptr) return nullptr;
    return std::make_unique<PulseOutput>(connection, interrupt);
  }
};

}  // namespace

std::unique_ptr<OutputFactory> makeSystemOutput() {
  return std::make_unique<PulseFactory>();
}

}  // namespace engine
