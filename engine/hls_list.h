#pragma once

#include <chrono>
#include <optional>

#include "engine/byte_source.h"
#include "engine/hls_playlist.h"

namespace engine {

/// Follows a list of segments: all of an ended one, a live one from a little before
/// its end on. One thread.
class HlsList {
 public:
  HlsList(HlsPlaylist list, Url url, const Interrupt& interrupt);

  /// Waits for the next segment. `over`: there will be none.
  [[nodiscard]] NetError next(HlsSegment& segment, bool& over);
  /// What the list's addresses are relative to.
  const Url& url() const { return url_; }

 private:
  bool takeNext(HlsSegment& segment);
  NetError reload();
  std::chrono::milliseconds interval(bool changed) const;

  HlsPlaylist list_;
  Url url_;
  const Interrupt& interrupt_;
  uint64_t next_number_;
  bool skipped_ = false;  ///< the segment to come does not follow the last one
  Clock::time_point reload_at_;
  Clock::time_point last_news_ = Clock::now();
};

}  // namespace engine
