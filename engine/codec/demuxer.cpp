#include "engine/codec/demuxer.h"

namespace engine {
namespace {

// Small, so that what has been read is what is about to sound.
constexpr int kReadSize = 4096;

}  // namespace

Demuxer::~Demuxer() {
  avformat_close_input(&context_);
  if (io_ == nullptr) return;
  av_freep(&io_->buffer);
  avio_context_free(&io_);
}

int Demuxer::readBytes(void* self, uint8_t* to, int room) noexcept {
  try {
    const int got = static_cast<Demuxer*>(self)->read_(to, room);
    return got > 0 ? got : AVERROR_EOF;
  } catch (...) {
    return AVERROR(ENOMEM);
  }
}

bool Demuxer::open(const char* kind, int flags) {
  // Damage is an everyday thing in radio, and nobody reads the console.
  av_log_set_level(AV_LOG_QUIET);
  auto* buffer = static_cast<uint8_t*>(av_malloc(kReadSize));
  if (buffer == nullptr) return false;
  io_ = avio_alloc_context(buffer, kReadSize, 0, this, readBytes, nullptr, nullptr);
  if (io_ == nullptr) {
    av_free(buffer);
    return false;
  }
  context_ = avformat_alloc_context();
  if (context_ == nullptr) return false;
  context_->pb = io_;
  context_->flags |= flags | AVFMT_FLAG_CUSTOM_IO;
  // Frees the context when it fails.
  return avformat_open_input(&context_, nullptr, av_find_input_format(kind), nullptr) == 0;
}

bool Demuxer::readPacket(AVPacket& packet) {
  for (;;) {
    const int result = av_read_frame(context_, &packet);
    if (result != AVERROR(EAGAIN)) return result == 0;
  }
}

}  // namespace engine
