#include "engine/sound/output_silent.h"

#include <algorithm>

namespace engine {
namespace {

constexpr unsigned kQueueMilliseconds = 200;
constexpr auto kNap = std::chrono::milliseconds(100);

}  // namespace

bool SilentOutput::write(std::span<const float>& samples) {
  while (pendingMilliseconds() > kQueueMilliseconds) {
    if (interrupt_.wait(kNap)) return true;
  }
  until_ = std::max(until_, Clock::now()) +
           std::chrono::microseconds(samples.size() / kChannels * 1'000'000 / kRate);
  samples = {};
  return true;
}

unsigned SilentOutput::pendingMilliseconds() {
  const auto left =
      std::chrono::duration_cast<std::chrono::milliseconds>(until_ - Clock::now()).count();
  return left > 0 ? static_cast<unsigned>(left) : 0;
}

}  // namespace engine
