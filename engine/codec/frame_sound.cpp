#include "engine/codec/frame_sound.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/samplefmt.h>
}

#include <cstdint>

#include "engine/abi/bass.h"

namespace engine {
namespace {

float toFloat(float sample) {
  return sample;
}
float toFloat(int16_t sample) {
  return static_cast<float>(sample) / 32768.0f;
}
float toFloat(int32_t sample) {
  return static_cast<float>(static_cast<double>(sample) / 2147483648.0);
}

template <class Sample>
void interleave(const AVFrame& frame, int channels, std::vector<float>& samples) {
  float* to = samples.data();
  if (av_sample_fmt_is_planar(static_cast<AVSampleFormat>(frame.format)) == 0) {
    const auto* from = reinterpret_cast<const Sample*>(frame.extended_data[0]);
    for (size_t i = 0; i < samples.size(); ++i) to[i] = toFloat(from[i]);
    return;
  }
  for (int channel = 0; channel < channels; ++channel) {
    const auto* from = reinterpret_cast<const Sample*>(frame.extended_data[channel]);
    for (int i = 0; i < frame.nb_samples; ++i) to[i * channels + channel] = toFloat(from[i]);
  }
}

uint32_t typeOf(AVCodecID codec) {
  switch (codec) {
    case AV_CODEC_ID_MP1:
      return BASS_CTYPE_STREAM_MP1;
    case AV_CODEC_ID_MP2:
      return BASS_CTYPE_STREAM_MP2;
    case AV_CODEC_ID_MP3:
      return BASS_CTYPE_STREAM_MP3;
    case AV_CODEC_ID_AAC:
    case AV_CODEC_ID_AAC_LATM:
      return BASS_CTYPE_STREAM_AAC;
    case AV_CODEC_ID_FLAC:
      return BASS_CTYPE_STREAM_FLAC;
    default:
      return BASS_CTYPE_STREAM_OGG;
  }
}

}  // namespace

bool takeFrame(const AVFrame& frame, AVCodecID codec, std::vector<float>& samples,
               kestrel_sound* sound) {
  const int channels = frame.ch_layout.nb_channels;
  const int frames = frame.nb_samples;
  if (channels <= 0 || frames <= 0 || frame.sample_rate <= 0) return false;
  samples.resize(static_cast<size_t>(frames) * static_cast<size_t>(channels));
  switch (frame.format) {
    case AV_SAMPLE_FMT_FLT:
    case AV_SAMPLE_FMT_FLTP:
      interleave<float>(frame, channels, samples);
      break;
    case AV_SAMPLE_FMT_S16:
    case AV_SAMPLE_FMT_S16P:
      interleave<int16_t>(frame, channels, samples);
      break;
    case AV_SAMPLE_FMT_S32:
    case AV_SAMPLE_FMT_S32P:
      interleave<int32_t>(frame, channels, samples);
      break;
    default:
      return false;
  }
  *sound = {samples.data(), frames, channels, frame.sample_rate, typeOf(codec)};
  return true;
}

}  // namespace engine
