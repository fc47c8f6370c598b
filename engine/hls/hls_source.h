#pragma once

#include <memory>

#include "engine/codec/codec_objects.h"
#include "engine/codec/demuxer.h"
#include "engine/hls/hls_list.h"
#include "engine/hls/hls_segment.h"
#include "engine/net/byte_source.h"

namespace engine {

/// HTTP Live Streaming as one stream of bare MPEG audio or ADTS frames: segments in
/// MPEG-TS, fragmented MP4 or just frames, one after the other, their ID3 tags as
/// titles. One thread.
class HlsSource final : public ByteSource {
 public:
  /// `head`: the answer that brought the list. `place`, where the listener was and is,
  /// outlives this.
  HlsSource(HlsPlaylist list, Url url, const ResponseHead& head, const Interrupt& interrupt,
            HlsPlace& place);

  const ResponseHead& head() const override { return head_; }
  [[nodiscard]] NetError read(uint8_t* to, size_t room, size_t& got) override;
  std::optional<std::string> takeTitle() override;
  bool isOver() const override { return over_; }

 private:
  enum class Kind { frames, transport, mp4 };

  void beginPart();
  void endPart();
  void produce();
  void producePackets();
  const AVCodecParameters& packetCodec() const;
  bool isSound() const;
  void takePacket();
  void readTag();
  void setTitle(const std::string& title);
  bool takeListTitle();
  int readPart(uint8_t* to, int room);
  int readSegments(uint8_t* to, int room);
  bool nextSegment(HlsSegment& segment);
  bool openNext();
  bool loadMap(const HlsSegment& segment);
  bool openSegment(const HlsSegment& segment);
  bool noteFailure(NetError error);
  bool fillFront(size_t wanted);
  Kind kindOfFront() const;

  const ResponseHead head_;
  HlsList list_;
  HlsSegmentReader reader_;

  // A part is what one demuxer can read: segments that belong together.
  bool in_part_ = false;
  Kind kind_ = Kind::frames;
  std::unique_ptr<Demuxer> demuxer_;
  Owned<AVPacket> packet_;
  int stream_ = -1;          ///< that is listened to
  uint64_t part_bytes_ = 0;  ///< that the demuxer was given
  std::shared_ptr<const HlsMap> map_;
  std::optional<HlsSegment> waiting_;  ///< begins the next part
  std::vector<uint8_t> front_;         ///< read of the segment ahead of its turn
  size_t front_taken_ = 0;
  int failures_ = 0;  ///< segments in a row

  std::vector<uint8_t> out_;
  size_t out_taken_ = 0;
  std::string title_;           ///< of what comes after out_
  std::string list_title_;      ///< of what the list says is in the segment…
  uint64_t list_title_at_ = 0;  ///< …that begins there in the part
  bool has_tags_ = false;       ///< whose titles are better than the list's
  std::optional<std::string> told_;
  NetError error_ = NetError::none;
  bool over_ = false;
};

}  // namespace engine
