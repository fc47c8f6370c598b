#include "engine/sound/gain.h"

#include <algorithm>

#include "engine/sound/output.h"

namespace engine {

void Gain::apply(std::span<float> samples, float target, unsigned rate) {
  if (reached_ == 1.0f && target == 1.0f) return;
  const float step = 1000.0f / static_cast<float>(rate * kRampMilliseconds);
  for (; samples.size() >= Output::kChannels; samples = samples.subspan(Output::kChannels)) {
    if (reached_ != target) reached_ += std::clamp(target - reached_, -step, step);
    for (float& sample : samples.first(Output::kChannels)) sample *= reached_;
  }
}

}  // namespace engine
