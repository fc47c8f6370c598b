#pragma once

#include <chrono>
#include <optional>

#include "engine/hls/hls_playlist.h"
#include "engine/net/byte_source.h"

namespace engine {

/// How far a listener has come; outlives the connection it was heard on.
struct HlsPlace {
  bool begun = false;
  uint64_t number = 0;  ///< of the last segment that was heard
  HlsFile file;         ///< of that
};

/// Follows a list of segments: all of an ended one, a live one from a little before
/// its end on, or from the place where the listener was. One thread.
class HlsList {
 public:
  /// `interrupt` and `place` outlive this.
  HlsList(HlsPlaylist list, Url url, const Interrupt& interrupt, HlsPlace& place);

  /// Waits for the next segment. `over`: there will be none.
  [[nodiscard]] NetError next(HlsSegment& segment, bool& over);
  /// That segment is heard: nobody is to hear it again.
  void setHeard(const HlsSegment& segment) { place_ = {true, segment.number, segment.file}; }
  /// What the list's addresses are relative to.
  const Url& url() const { return url_; }

 private:
  bool takeNext(HlsSegment& segment);
  NetError reload();
  std::chrono::milliseconds interval(bool changed) const;

  HlsPlaylist list_;
  Url url_;
  const Interrupt& interrupt_;
  HlsPlace& place_;
  uint64_t next_number_;
  bool skipped_ = false;  ///< the segment to come does not follow the last one
  Clock::time_point reload_at_;
  Clock::time_point last_news_ = Clock::now();
};

}  // namespace engine
