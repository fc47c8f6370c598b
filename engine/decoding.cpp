#include "engine/decoding.h"

#include <algorithm>
#include <span>
#include <string_view>

#include "engine/text/title.h"

namespace engine {
namespace {

// Bytes without sound after which another codec is looked for, and so much further
// on again. Far more than lies between two frames; a picture in a container's head
// may be longer, but is not taken for another stream.
constexpr size_t kSilence = 16 * 1024;
// A decoder has read so much more, at most, than the sound it gives was made of.
constexpr size_t kAhead = 4 * 1024;
// A step through bytes that nobody knows.
constexpr size_t kStep = 1024;

using Bytes = std::span<const uint8_t>;

// Where in the bytes a stream may begin: at once (bare frames are found a little
// further on as well), or with the first sign of a container.
std::vector<size_t> likelyStarts(Bytes bytes) {
  std::vector<size_t> starts{0};
  for (const std::string_view sign : {"OggS", "fLaC"}) {
    const auto found = std::search(bytes.begin(), bytes.end(), sign.begin(), sign.end());
    if (found != bytes.end()) starts.push_back(static_cast<size_t>(found - bytes.begin()));
  }
  return starts;
}

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
      forget();
      return true;
    }
    decoder_.reset();
    if (next_ == nullptr && (ended_ || !findNext())) return false;
    codec_ = *next_;
    next_ = nullptr;
    decoder_ = std::make_unique<Decoder>(codec_, input_);
  }
}

int Decoding::feed(uint8_t* to, int room) {
  // The present codec's end, once what comes is known to be another's.
  if (next_ != nullptr || (silence_ >= kSilence && findOther())) return 0;
  const int got = read(to, room);
  if (got == 0) findOther();
  return got;
}

int Decoding::read(uint8_t* to, int room) {
  int got = static_cast<int>(std::min(again_.size() - again_taken_, static_cast<size_t>(room)));
  if (got != 0) {
    std::copy_n(again_.begin() + static_cast<std::ptrdiff_t>(again_taken_), got, to);
    again_taken_ += static_cast<size_t>(got);
  } else {
    got = read_(to, room);
    ended_ = got <= 0;
    if (ended_) return got;
  }
  unplayed_.insert(unplayed_.end(), to, to + got);
  silence_ += static_cast<size_t>(got);
  position_ += static_cast<uint64_t>(got);
  return got;
}

bool Decoding::findOther() {
  const bool found = recogniseUnplayed(true);
  if (!found) forget();
  return found;
}

void Decoding::forget() {
  silence_ = 0;
  const size_t old = unplayed_.size() - std::min(unplayed_.size(), kAhead);
  unplayed_.erase(unplayed_.begin(), unplayed_.begin() + static_cast<std::ptrdiff_t>(old));
}

// Reads on until some codec knows what comes.
bool Decoding::findNext() {
  for (;;) {
    if (recogniseUnplayed(false)) return true;
    if (unplayed_.size() > kSilence) forget();
    uint8_t unknown[kStep];
    if (read(unknown, sizeof unknown) <= 0) return false;
  }
}

bool Decoding::recogniseUnplayed(bool others_only) {
  for (const size_t start : likelyStarts(unplayed_)) {
    const Bytes head = Bytes(unplayed_).subspan(start);
    const uint64_t begin = position_ - head.size();
    // Each codec begins further on than the one before, or two could take turns for
    // ever.
    if (begin < least_begin_) continue;
    for (const Codec& codec : all_) {
      if (head.empty() || (others_only && codec.functions == codec_.functions)) continue;
      kestrel_format format;
      const int match =
          codec.functions->recognise(head.data(), static_cast<int>(head.size()), &format);
      if (match != KESTREL_YES) continue;
      next_ = &codec;
      std::vector<uint8_t> again(head.begin(), head.end());
      again.insert(again.end(), again_.begin() + static_cast<std::ptrdiff_t>(again_taken_),
                   again_.end());
      again_ = std::move(again);
      again_taken_ = 0;
      position_ = begin;
      least_begin_ = begin + 1;
      unplayed_.clear();
      silence_ = 0;
      return true;
    }
  }
  return false;
}

void Decoding::markTitle(const char* text) {
  buffer_.markTitle(titleTagOf(text), buffer_.level().consumed);
}

}  // namespace engine
