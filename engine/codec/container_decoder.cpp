#include "engine/codec/container_decoder.h"

#include <string>

#include "engine/codec/frame_sound.h"

namespace engine {
namespace {

std::string tagOf(const AVDictionary* tags, const char* name) {
  const AVDictionaryEntry* entry = av_dict_get(tags, name, nullptr, 0);
  return entry != nullptr ? entry->value : "";
}

std::string titleIn(const AVDictionary* tags) {
  const std::string artist = tagOf(tags, "artist");
  const std::string title = tagOf(tags, "title");
  return artist.empty() || title.empty() ? artist + title : artist + " - " + title;
}

}  // namespace

ContainerDecoder::ContainerDecoder(Kind kind, const kestrel_input& input)
    : kind_(kind),
      input_(input),
      pages_([this](uint8_t* to, int room) { return readInput(to, room); }),
      packet_(av_packet_alloc()),
      frame_(av_frame_alloc()) {
  if (!packet_ || !frame_) throw std::bad_alloc();
}

int ContainerDecoder::readInput(uint8_t* to, int room) {
  const int got = input_.read(input_.context, to, room);
  if (got <= 0) ended_ = true;
  return got;
}

int ContainerDecoder::decode(kestrel_sound* sound) {
  for (;;) {
    if (context_ && avcodec_receive_frame(context_.get(), frame_.get()) == 0) {
      if (takeFrame(*frame_, context_->codec_id, samples_, sound)) return 1;
    } else if (!feedDecoder() && !nextLink()) {
      return 0;
    }
  }
}

// One packet, or the end of the link, after which the decoder gives its last sound.
bool ContainerDecoder::feedDecoder() {
  if (!context_) return false;
  while (demuxer_ && demuxer_->readPacket(*packet_)) {
    const bool ours = packet_->stream_index == stream_;
    // A broken packet is left out.
    if (ours) avcodec_send_packet(context_.get(), packet_.get());
    av_packet_unref(packet_.get());
    if (ours) return true;
  }
  if (!demuxer_) return false;
  demuxer_.reset();
  return avcodec_send_packet(context_.get(), nullptr) == 0;
}

bool ContainerDecoder::nextLink() {
  context_.reset();
  demuxer_.reset();
  while (!ended_) {
    if (begun_ && kind_ == Kind::flac) return false;
    if (begun_) pages_.nextLink();
    begun_ = true;
    if (openLink()) return true;
  }
  return false;
}

bool ContainerDecoder::openLink() {
  const bool ogg = kind_ == Kind::ogg;
  demuxer_ = std::make_unique<Demuxer>([this, ogg](uint8_t* to, int room) {
    return ogg ? pages_.read(to, room) : readInput(to, room);
  });
  if (!demuxer_->open(ogg ? "ogg" : "flac", ogg ? AVFMT_FLAG_NOPARSE : 0)) return false;
  const AVFormatContext& format = demuxer_->context();
  stream_ = -1;
  for (unsigned i = 0; i < format.nb_streams && stream_ < 0; ++i) {
    if (openDecoder(*format.streams[i])) stream_ = static_cast<int>(i);
  }
  if (stream_ < 0) return false;
  tellTitle(*format.streams[stream_]);
  return true;
}

bool ContainerDecoder::openDecoder(const AVStream& stream) {
  if (stream.codecpar->codec_type != AVMEDIA_TYPE_AUDIO) return false;
  const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
  if (codec == nullptr) return false;
  context_.reset(avcodec_alloc_context3(codec));
  if (context_ && avcodec_parameters_to_context(context_.get(), stream.codecpar) >= 0) {
    context_->pkt_timebase = stream.time_base;
    if (avcodec_open2(context_.get(), codec, nullptr) == 0) return true;
  }
  context_.reset();
  return false;
}

void ContainerDecoder::tellTitle(const AVStream& stream) const {
  std::string title = titleIn(stream.metadata);
  if (title.empty()) title = titleIn(demuxer_->context().metadata);
  if (!title.empty() && input_.title != nullptr) input_.title(input_.context, title.c_str());
}

int decodeContainer(void* decoder, kestrel_sound* sound) noexcept {
  try {
    return static_cast<ContainerDecoder*>(decoder)->decode(sound);
  } catch (...) {
    return 0;
  }
}

void closeContainer(void* decoder) noexcept {
  delete static_cast<ContainerDecoder*>(decoder);
}

}  // namespace engine
