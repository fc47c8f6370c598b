#include "engine/codec/frame_decoder.h"

#include <new>

#include "engine/codec/frame_sound.h"

namespace engine {
namespace {

// About an eighth of a second of a usual stream: small, so that decoding does not
// run far ahead of the sound.
constexpr int kReadSize = 2048;

}  // namespace

FrameDecoder* FrameDecoder::make(AVCodecID codec, const kestrel_input& input) {
  // Damaged frames are an everyday thing in radio, and nobody reads the console.
  av_log_set_level(AV_LOG_QUIET);
  const AVCodec* found = avcodec_find_decoder(codec);
  std::unique_ptr<FrameDecoder> made(new (std::nothrow) FrameDecoder(input));
  if (!found || !made) return nullptr;
  made->bytes_.resize(kReadSize + AV_INPUT_BUFFER_PADDING_SIZE);
  made->context_.reset(avcodec_alloc_context3(found));
  made->parser_.reset(av_parser_init(codec));
  made->packet_.reset(av_packet_alloc());
  made->frame_.reset(av_frame_alloc());
  if (!made->context_ || !made->parser_ || !made->packet_ || !made->frame_ ||
      avcodec_open2(made->context_.get(), found, nullptr) < 0) {
    return nullptr;
  }
  return made.release();
}

int FrameDecoder::decode(kestrel_sound* sound) {
  for (;;) {
    if (avcodec_receive_frame(context_.get(), frame_.get()) == 0) {
      if (takeFrame(*frame_, context_->codec_id, interleaved_, sound)) return 1;
    } else if (!nextPacket()) {
      return 0;
    } else {
      // A broken packet is left out; the parser finds the next good one.
      avcodec_send_packet(context_.get(), packet_.get());
    }
  }
}

bool FrameDecoder::nextPacket() {
  for (;;) {
    if (at_ == end_) {
      at_ = 0;
      end_ = input_.read(input_.context, bytes_.data(), kReadSize);
      if (end_ <= 0) {
        end_ = 0;
        return false;
      }
    }
    at_ += av_parser_parse2(parser_.get(), context_.get(), &packet_->data, &packet_->size,
                            bytes_.data() + at_, end_ - at_, AV_NOPTS_VALUE, AV_NOPTS_VALUE, 0);
    if (packet_->size != 0) return true;
  }
}

int decodeFrames(void* decoder, kestrel_sound* sound) noexcept {
  try {
    return static_cast<FrameDecoder*>(decoder)->decode(sound);
  } catch (...) {
    return 0;
  }
}

void closeFrames(void* decoder) noexcept {
  delete static_cast<FrameDecoder*>(decoder);
}

}  // namespace engine
