#include "engine/hls/hls_source.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <span>
#include <string_view>
#include <utility>

#include "engine/codec/id3.h"

namespace engine {
namespace {

constexpr int kMostFailures = 3;
constexpr size_t kSniff = 189;  // two packets' first bytes
// Gathered from packets before it is handed on: small pieces would look as if the
// network gave no more for now.
constexpr size_t kPiece = 16 * 1024;
constexpr size_t kFrontPiece = 1024;
constexpr size_t kLargestTag = 512 * 1024;
constexpr size_t kLargestMap = 1 << 20;

// What a station's own answer tells about it; its length and type are the list's.
ResponseHead stationHead(const ResponseHead& answer) {
  ResponseHead head = answer;
  std::erase_if(head.lines, [](const std::string& line) {
    return !line.starts_with("icy-") || line.starts_with("icy-metaint");
  });
  return head;
}

bool isSame(const HlsMap* one, const HlsMap* other) {
  return one == other || (one != nullptr && other != nullptr && one->file == other->file);
}

// The header that makes a bare AAC frame one of ADTS (ISO/IEC 13818-7), from the
// decoder's configuration in MP4 (ISO/IEC 14496-3). Nothing for one that ADTS cannot
// name.
std::optional<std::array<uint8_t, 7>> adtsFor(const AVCodecParameters& codec, size_t payload) {
  if (codec.extradata_size < 2) return std::nullopt;
  const unsigned first = codec.extradata[0];
  const unsigned second = codec.extradata[1];
  const unsigned object = first >> 3;
  // HE-AAC is told by its core, which the decoder finds the rest in.
  const unsigned profile = object >= 1 && object <= 4 ? object - 1 : 1;
  const unsigned rate = (first & 7) << 1 | second >> 7;
  const unsigned channels = second >> 3 & 7;
  const size_t length = payload + 7;
  if (rate > 12 || length > 0x1fff) return std::nullopt;
  const auto byte = [](size_t value) { return static_cast<uint8_t>(value & 0xff); };
  return std::array<uint8_t, 7>{0xff,
                                0xf1,
                                byte(profile << 6 | rate << 2 | channels >> 2),
                                byte(channels << 6 | length >> 11),
                                byte(length >> 3),
                                byte((length & 7) << 5 | 0x1f),
                                0xfc};
}

// The demuxer takes the five bytes off that stand before such a tag in one kind of
// packet; in the other, which HLS uses, they were the tag's own first.
std::string timedTitle(std::span<const uint8_t> bytes) {
  constexpr std::array<uint8_t, 5> kTagStart = {'I', 'D', '3', 4, 0};
  std::vector<uint8_t> tag(bytes.begin(), bytes.end());
  if (id3Length(tag) == 0) tag.insert(tag.begin(), kTagStart.begin(), kTagStart.end());
  return id3Title(tag);
}

}  // namespace

HlsSource::HlsSource(HlsPlaylist list, Url url, const ResponseHead& head,
                     const Interrupt& interrupt, HlsPlace& place)
    : head_(stationHead(head)),
      list_(std::move(list), std::move(url), interrupt, place),
      reader_(interrupt),
      packet_(av_packet_alloc()) {
  if (!packet_) throw std::bad_alloc();
}

std::optional<std::string> HlsSource::takeTitle() {
  return std::exchange(told_, std::nullopt);
}

NetError HlsSource::read(uint8_t* to, size_t room, size_t& got) {
  got = 0;
  for (;;) {
    if (out_taken_ < out_.size()) {
      got = std::min(room, out_.size() - out_taken_);
      std::memcpy(to, out_.data() + out_taken_, got);
      out_taken_ += got;
      return NetError::none;
    }
    out_.clear();
    out_taken_ = 0;
    if (!title_.empty()) told_ = std::exchange(title_, {});
    // What the demuxer still holds comes before the end.
    const bool ended = error_ != NetError::none || over_;
    if (error_ == NetError::interrupted || (ended && !in_part_)) return error_;
    // A part may begin with a title, which comes before its bytes.
    in_part_ ? produce() : beginPart();
  }
}

void HlsSource::beginPart() {
  if (!reader_.isOpen() && !openNext()) return;
  fillFront(front_taken_ + kSniff);
  if (error_ != NetError::none) return;
  kind_ = kindOfFront();
  in_part_ = true;
  if (kind_ == Kind::frames) {
    takeListTitle();
    readTag();
    return;
  }
  stream_ = -1;
  demuxer_ =
      std::make_unique<Demuxer>([this](uint8_t* to, int room) { return readPart(to, room); });
  if (demuxer_->open(kind_ == Kind::mp4 ? "mov" : "mpegts", AVFMT_FLAG_NOPARSE)) return;
  endPart();
  if (++failures_ >= kMostFailures) error_ = NetError::format;
}

void HlsSource::endPart() {
  in_part_ = false;
  demuxer_.reset();
  front_.clear();
  front_taken_ = 0;
  part_bytes_ = 0;
}

HlsSource::Kind HlsSource::kindOfFront() const {
  const size_t size = front_.size() - front_taken_;
  const uint8_t* front = front_.data() + front_taken_;
  if (size > 0 && front[0] == 'G' && (size < kSniff || front[kSniff - 1] == 'G')) {
    return Kind::transport;
  }
  if (size < 8) return Kind::frames;
  const std::string_view name(reinterpret_cast<const char*>(front) + 4, 4);
  const auto names = {"ftyp", "styp", "moof", "moov", "sidx", "emsg", "prft"};
  const bool box =
      std::any_of(names.begin(), names.end(), [&](const char* each) { return name == each; });
  return box ? Kind::mp4 : Kind::frames;
}

void HlsSource::produce() {
  if (kind_ != Kind::frames) return producePackets();
  out_.resize(kPiece);
  const int got = readPart(out_.data(), kPiece);
  out_.resize(static_cast<size_t>(std::max(got, 0)));
  if (got <= 0) endPart();
}

// What comes before a title must be out before the title.
void HlsSource::producePackets() {
  while (out_.size() < kPiece && title_.empty()) {
    // One whose title had to be told first is still there.
    if (packet_->data == nullptr && !demuxer_->readPacket(*packet_)) return endPart();
    const bool in_place = packet_->pos < 0 || static_cast<uint64_t>(packet_->pos) >= list_title_at_;
    if (in_place && isSound() && takeListTitle()) return;
    takePacket();
    av_packet_unref(packet_.get());
  }
}

const AVCodecParameters& HlsSource::packetCodec() const {
  return *demuxer_->context().streams[packet_->stream_index]->codecpar;
}

// Of the one that is listened to, where there are several.
bool HlsSource::isSound() const {
  return packetCodec().codec_type == AVMEDIA_TYPE_AUDIO &&
         (stream_ < 0 || stream_ == packet_->stream_index);
}

void HlsSource::takePacket() {
  const AVCodecParameters& codec = packetCodec();
  const std::span<const uint8_t> bytes(packet_->data, static_cast<size_t>(packet_->size));
  if (codec.codec_id == AV_CODEC_ID_TIMED_ID3) return setTitle(timedTitle(bytes));
  if (!isSound()) return;
  if (stream_ < 0) stream_ = packet_->stream_index;
  if (kind_ == Kind::mp4 && codec.codec_id == AV_CODEC_ID_AAC) {
    const auto header = adtsFor(codec, bytes.size());
    if (!header) return;
    out_.insert(out_.end(), header->begin(), header->end());
  }
  out_.insert(out_.end(), bytes.begin(), bytes.end());
}

void HlsSource::setTitle(const std::string& title) {
  if (title.empty()) return;
  title_ = title;
  has_tags_ = true;
}

bool HlsSource::takeListTitle() {
  const std::string title = std::exchange(list_title_, {});
  if (title.empty() || has_tags_) return false;
  title_ = title;
  return true;
}

// Frames by themselves begin with a tag that tells their time, and maybe a title.
void HlsSource::readTag() {
  const auto front = [this] { return std::span<const uint8_t>(front_).subspan(front_taken_); };
  while (const size_t length = id3Length(front())) {
    if (length > kLargestTag || !fillFront(front_taken_ + length)) return;
    setTitle(id3Title(front().first(length)));
    const size_t read = front_taken_ + length;
    front_.erase(front_.begin(), front_.begin() + static_cast<std::ptrdiff_t>(read));
    front_taken_ = 0;
    fillFront(front_taken_ + kSniff);
  }
}

bool HlsSource::fillFront(size_t wanted) {
  while (front_.size() < wanted && reader_.isOpen()) {
    const size_t had = front_.size();
    front_.resize(had + kFrontPiece);
    size_t got = 0;
    const NetError error = reader_.read(front_.data() + had, kFrontPiece, got);
    front_.resize(had + got);
    if (error == NetError::interrupted) error_ = error;
    if (error != NetError::none || got == 0) reader_.close();
  }
  return front_.size() >= wanted;
}

// Over when the segment ends that belongs to no demuxer, or before one that does not
// go on where the last one ended.
int HlsSource::readPart(uint8_t* to, int room) {
  const int got = readSegments(to, room);
  part_bytes_ += static_cast<uint64_t>(got);
  return got;
}

int HlsSource::readSegments(uint8_t* to, int room) {
  for (;;) {
    if (front_taken_ < front_.size()) {
      const size_t got = std::min(front_.size() - front_taken_, static_cast<size_t>(room));
      std::memcpy(to, front_.data() + front_taken_, got);
      front_taken_ += got;
      return static_cast<int>(got);
    }
    if (reader_.isOpen()) {
      size_t got = 0;
      const NetError error = reader_.read(to, static_cast<size_t>(room), got);
      if (error == NetError::none && got != 0) return static_cast<int>(got);
      // What is lost of a segment is lost: the next one goes on.
      reader_.close();
      if (error == NetError::interrupted) error_ = error;
    }
    if (kind_ == Kind::frames || error_ != NetError::none) return 0;
    HlsSegment segment;
    if (!nextSegment(segment)) return 0;
    if (segment.discontinuity || !isSame(segment.map.get(), map_.get())) {
      waiting_ = std::move(segment);
      return 0;
    }
    if (!openSegment(segment) && error_ != NetError::none) return 0;
  }
}

bool HlsSource::nextSegment(HlsSegment& segment) {
  if (waiting_) {
    segment = *std::exchange(waiting_, std::nullopt);
    return true;
  }
  error_ = list_.next(segment, over_);
  return error_ == NetError::none && !over_;
}

bool HlsSource::openNext() {
  HlsSegment segment;
  while (nextSegment(segment)) {
    endPart();
    if (loadMap(segment) && openSegment(segment)) return true;
    if (error_ != NetError::none) break;
  }
  return false;
}

bool HlsSource::loadMap(const HlsSegment& segment) {
  map_ = segment.map;
  if (!map_) return true;
  const NetError error = reader_.open(list_.url(), map_->file, map_->key.get(), segment.number);
  if (error != NetError::none) return noteFailure(error);
  if (fillFront(kLargestMap)) return noteFailure(NetError::format);
  return error_ == NetError::none;
}

bool HlsSource::openSegment(const HlsSegment& segment) {
  const NetError error = reader_.open(list_.url(), segment.file, segment.key.get(), segment.number);
  if (error != NetError::none) return noteFailure(error);
  failures_ = 0;
  list_.setHeard(segment);
  list_title_ = segment.title;
  list_title_at_ = part_bytes_;
  return true;
}

// A segment that is not to be had is left out, some in a row are the end.
bool HlsSource::noteFailure(NetError error) {
  const bool final = error == NetError::interrupted || error == NetError::format;
  if (final || ++failures_ >= kMostFailures) error_ = error;
  return false;
}

}  // namespace engine
