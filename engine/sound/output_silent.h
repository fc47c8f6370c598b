#pragma once

#include "engine/net/socket.h"
#include "engine/sound/output.h"

namespace engine {

/// Stands in while there is no device, so that the station runs on at its pace.
class SilentOutput final : public Output {
 public:
  explicit SilentOutput(const Interrupt& interrupt) : interrupt_(interrupt) {}

  unsigned rate() const override { return kRate; }
  bool write(std::span<const float>& samples) override;
  void flush() override {}
  unsigned pendingMilliseconds() override;
  void finish(std::span<const float> /*last*/) override {}

 private:
  static constexpr unsigned kRate = 48000;

  const Interrupt& interrupt_;
  Clock::time_point until_{};  ///< when what was written would have sounded
};

}  // namespace engine
