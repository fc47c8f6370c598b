#pragma once

extern "C" {
#include <libavformat/avformat.h>
}

#include <cstdint>
#include <functional>

namespace engine {

/// FFmpeg's demuxer over a function that gives the bytes. One thread.
class Demuxer {
 public:
  /// As kestrel_input::read.
  using Read = std::function<int(uint8_t* to, int room)>;

  explicit Demuxer(Read read) : read_(std::move(read)) {}
  ~Demuxer();
  Demuxer(const Demuxer&) = delete;
  Demuxer& operator=(const Demuxer&) = delete;

  /// Reads the headers of a container of that kind (FFmpeg's short name); `flags` as
  /// AVFormatContext has them. False when it is none or has ended.
  bool open(const char* kind, int flags);
  /// False at the end of what the function gives. The caller unrefs the packet.
  bool readPacket(AVPacket& packet);
  /// Only after open().
  const AVFormatContext& context() const { return *context_; }

 private:
  static int readBytes(void* self, uint8_t* to, int room) noexcept;

  Read read_;
  AVFormatContext* context_ = nullptr;
  AVIOContext* io_ = nullptr;
};

}  // namespace engine
