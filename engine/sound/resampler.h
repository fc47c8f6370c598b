#pragma once

#include <memory>
#include <span>
#include <vector>

#include "engine/abi/plugin.h"

struct SwrContext;

namespace engine {

/// Brings decoded sound of any rate and number of channels to the output's rate in
/// stereo. One thread.
class Resampler {
 public:
  explicit Resampler(unsigned output_rate) : output_rate_(output_rate) {}
  ~Resampler();
  Resampler(const Resampler&) = delete;
  Resampler& operator=(const Resampler&) = delete;

  /// The converted sound, valid until the next call; may be empty. The caller may
  /// change it in place.
  std::span<float> convert(const kestrel_sound& sound);

 private:
  bool prepare(const kestrel_sound& sound);

  unsigned output_rate_;
  SwrContext* context_ = nullptr;
  int rate_ = 0;  ///< that the context was made for
  int channels_ = 0;
  std::vector<float> converted_;
};

}  // namespace engine
