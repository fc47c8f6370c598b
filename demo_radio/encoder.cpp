#include "demo_radio/encoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/opt.h>
}

#include <array>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace demo_radio {
namespace {

struct FreeContext {
  void operator()(AVCodecContext* c) const { avcodec_free_context(&c); }
};
struct FreeFrame {
  void operator()(AVFrame* f) const { av_frame_free(&f); }
};
struct FreePacket {
  void operator()(AVPacket* p) const { av_packet_free(&p); }
};
using Context = std::unique_ptr<AVCodecContext, FreeContext>;

/// Frames before the part that is kept: the encoder's state has settled by then.
constexpr int kLeadFrames = 16;

void check(int result, const char* what) {
  if (result < 0) throw std::runtime_error(std::string("encoder: ") + what + " failed");
}

Context openEncoder(const Format& format) {
  const AVCodec* codec = format.codec == Codec::mp3 ? avcodec_find_encoder_by_name("libmp3lame")
                                                    : avcodec_find_encoder(AV_CODEC_ID_AAC);
  if (codec == nullptr) throw std::runtime_error("encoder: not in this libavcodec");
  Context context(avcodec_alloc_context3(codec));
  context->sample_rate = format.sample_rate;
  context->sample_fmt = AV_SAMPLE_FMT_FLTP;
  av_channel_layout_default(&context->ch_layout, format.channels);
  context->bit_rate = format.kbit * 1000;
  if (format.codec == Codec::mp3) {
    av_opt_set_int(context->priv_data, "reservoir", 0, 0);
    context->compression_level = 7;
  } else {
    av_opt_set(context->priv_data, "aac_coder", "fast", 0);
  }
  check(avcodec_open2(context.get(), codec, nullptr), "opening");
  return context;
}

/// The header that stands before each frame of an AAC stream (ISO 13818-7, ADTS):
/// no check sum, low-complexity profile.
std::string adtsHeader(const Format& format, std::size_t payload) {
  const unsigned rate_index = format.sample_rate == 44100 ? 4 : 7;
  const auto channels = static_cast<unsigned>(format.channels);
  const auto length = static_cast<unsigned>(payload + 7);
  const std::array<unsigned, 7> bytes = {0xFF,
                                         0xF1,
                                         1U << 6 | rate_index << 2,
                                         channels << 6 | length >> 11,
                                         length >> 3 & 0xFF,
                                         (length & 7) << 5 | 0x1F,
                                         0xFC};
  std::string header;
  for (unsigned byte : bytes) header += static_cast<char>(byte & 0xFF);
  return header;
}

/// Fills the frame with the loop's samples from `position` on, wrapping round.
void fill(AVFrame& frame, const std::vector<float>& samples, std::size_t position, int channels) {
  const auto width = static_cast<std::size_t>(channels);
  const std::size_t length = samples.size() / width;
  for (std::size_t channel = 0; channel < width; ++channel) {
    auto* out = reinterpret_cast<float*>(frame.data[channel]);
    for (std::size_t i = 0; i < static_cast<std::size_t>(frame.nb_samples); ++i)
      out[i] = samples[(position + i) % length * width + channel];
  }
}

}  // namespace

std::string encodeLoop(const std::vector<float>& samples, const Format& format) {
  const Context encoder = openEncoder(format);
  const std::unique_ptr<AVFrame, FreeFrame> frame(av_frame_alloc());
  frame->nb_samples = encoder->frame_size;
  frame->format = encoder->sample_fmt;
  check(av_channel_layout_copy(&frame->ch_layout, &encoder->ch_layout), "layout");
  check(av_frame_get_buffer(frame.get(), 0), "buffer");

  const std::unique_ptr<AVPacket, FreePacket> packet(av_packet_alloc());
  const auto wanted = static_cast<int>(samples.size() / static_cast<std::size_t>(format.channels)) /
                      encoder->frame_size;
  std::string loop;
  int received = 0;
  for (std::int64_t position = 0; received < kLeadFrames + wanted;
       position += encoder->frame_size) {
    check(av_frame_make_writable(frame.get()), "buffer");
    fill(*frame, samples, static_cast<std::size_t>(position), format.channels);
    frame->pts = position;
    check(avcodec_send_frame(encoder.get(), frame.get()), "encoding");
    while (avcodec_receive_packet(encoder.get(), packet.get()) == 0) {
      if (received >= kLeadFrames && received < kLeadFrames + wanted) {
        const auto size = static_cast<std::size_t>(packet->size);
        if (format.codec == Codec::aac) loop += adtsHeader(format, size);
        loop.append(reinterpret_cast<const char*>(packet->data), size);
      }
      ++received;
      av_packet_unref(packet.get());
    }
  }
  return loop;
}

}  // namespace demo_radio
