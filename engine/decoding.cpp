#include "engine/decoding.h"

#include "engine/title.h"

namespace engine {
namespace {

// Bytes without sound after which another codec is looked for, and so much further
// on again. Far more than lies between two frames; a picture in a container's head
// may be longer, but is not taken for another stream.
constexpr size_t kSilence = 16 * 1024;
// Enough for every codec to know its own by, and to find frames in some garbage.
constexpr size_t kLook = 16 * 1024;

}  // namespace

/// A codec's decoder while it lives.
class Decoding::Decoder {
 public:
  Decoder(const Codec& codec, const kestrel_input& input)
      : codec_(codec), decoder_(codec.functions->open(&input)) {}
  ~Decoder() {
    if (decoder_ != nullptr) codec_.functions->close(decoder_);
  }
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  bool decode(kestrel_sound* sound) {
    return decoder_ != nullptr && codec_.functions->decode(decoder_, sound) == 1;
  }

 private:
  const Codec codec_;
  void* const decoder_;
};

Decoding::Decoding(const Codec& first, std::vector<Codec> all, DownloadBuffer& buffer, Read read)
    : all_(std::move(all)),
      buffer_(buffer),
      read_(std::move(read)),
      input_{this,
             [](void* self, uint8_t* to, int room) {
               return static_cast<Decoding*>(self)->feed(to, room);
             },
             [](void* self, const char* text) { static_cast<Decoding*>(self)->markTitle(text); }},
      codec_(first),
      decoder_(std::make_unique<Decoder>(codec_, input_)) {}

Decoding::~Decoding() = default;

bool Decoding::decode(kestrel_sound* sound) {
  for (;;) {
    if (decoder_ && decoder_->decode(sound)) {
      silent_bytes_ = 0;
      return true;
    }
    decoder_.reset();
    if (ended_ || !findNext()) return false;
    codec_ = *next_;
    next_ = nullptr;
    silent_bytes_ = 0;
    decoder_ = std::make_unique<Decoder>(codec_, input_);
  }
}

int Decoding::feed(uint8_t* to, int room) {
  // The present codec's end, once what comes is known to be another's.
  if (next_ != nullptr || (silent_bytes_ >= kSilence && findOther())) return 0;
  const int got = read_(to, room);
  ended_ = got <= 0;
  silent_bytes_ += static_cast<size_t>(got > 0 ? got : 0);
  return got;
}

bool Decoding::findOther() {
  silent_bytes_ = 0;
  next_ = recognise(true);
  return next_ != nullptr;
}

// Reads on until some codec knows what comes. One that made no use of it at all is
// not asked twice about the same.
bool Decoding::findNext() {
  while (next_ == nullptr) {
    if (silent_bytes_ != 0) next_ = recognise(false);
    if (next_ != nullptr) break;
    uint8_t unknown[1024];
    const int got = read_(unknown, sizeof unknown);
    if (got <= 0) return false;
    silent_bytes_ += static_cast<size_t>(got);
  }
  return true;
}

const Codec* Decoding::recognise(bool others_only) {
  const std::vector<uint8_t> head = buffer_.peek(kLook);
  kestrel_format format;
  for (const Codec& codec : all_) {
    if (others_only && codec.functions == codec_.functions) continue;
    const int match =
        codec.functions->recognise(head.data(), static_cast<int>(head.size()), &format);
    if (match == KESTREL_YES) return &codec;
  }
  return nullptr;
}

void Decoding::markTitle(const char* text) {
  buffer_.markTitle(titleTagOf(text), buffer_.level().consumed);
}

}  // namespace engine
