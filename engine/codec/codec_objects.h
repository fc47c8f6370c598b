#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <memory>

namespace engine {

/// Frees what FFmpeg's codec library has made.
struct FreeCodecObject {
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
  void operator()(AVCodecParserContext* parser) const { av_parser_close(parser); }
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};

template <class Object>
using Owned = std::unique_ptr<Object, FreeCodecObject>;

}  // namespace engine
