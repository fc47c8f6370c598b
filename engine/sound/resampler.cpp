#include "engine/sound/resampler.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}

#include "engine/sound/output.h"

namespace engine {

Resampler::~Resampler() {
  swr_free(&context_);
}

bool Resampler::prepare(const kestrel_sound& sound) {
  if (context_ != nullptr && rate_ == sound.rate && channels_ == sound.channels) return true;
  swr_free(&context_);
  AVChannelLayout from = {};
  AVChannelLayout to = {};
  av_channel_layout_default(&from, sound.channels);
  av_channel_layout_default(&to, Output::kChannels);
  rate_ = sound.rate;
  channels_ = sound.channels;
  if (swr_alloc_set_opts2(&context_, &to, AV_SAMPLE_FMT_FLT, static_cast<int>(output_rate_), &from,
                          AV_SAMPLE_FMT_FLT, sound.rate, 0, nullptr) < 0 ||
      swr_init(context_) < 0) {
    swr_free(&context_);
    return false;
  }
  return true;
}

std::span<float> Resampler::convert(const kestrel_sound& sound) {
  if (!prepare(sound)) return {};
  const int room = swr_get_out_samples(context_, sound.frames);
  if (room <= 0) return {};
  converted_.resize(static_cast<size_t>(room) * Output::kChannels);
  auto* to = reinterpret_cast<uint8_t*>(converted_.data());
  const auto* from = reinterpret_cast<const uint8_t*>(sound.samples);
  const int frames = swr_convert(context_, &to, room, &from, sound.frames);
  if (frames <= 0) return {};
  return {converted_.data(), static_cast<size_t>(frames) * Output::kChannels};
}

}  // namespace engine
