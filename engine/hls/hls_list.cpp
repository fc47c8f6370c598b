#include "engine/hls/hls_list.h"

#include <algorithm>

#include "engine/net/fetch.h"
#include "engine/text/playlist.h"

namespace engine {
namespace {

// So far from a live list's end, in segments: as near as is safe.
constexpr size_t kBehind = 3;
constexpr size_t kLargestList = 4 << 20;
constexpr double kShortestWait = 0.5;
constexpr double kLongestWait = 10;
// A list without news for so long, or for so many of its segments, is dead.
constexpr double kDeadSeconds = 20;
constexpr double kDeadSegments = 4;
// Whoever was away for longer, in seconds beyond where a listener usually is, would
// rather hear what is on now.
constexpr double kLongestLag = 60;

std::chrono::milliseconds milliseconds(double seconds) {
  return std::chrono::milliseconds(static_cast<int64_t>(seconds * 1000));
}

uint64_t startOf(const HlsPlaylist& list) {
  if (list.segments.empty()) return 0;
  const size_t count = list.segments.size();
  const size_t first = list.ended || count <= kBehind ? 0 : count - kBehind;
  return list.segments[first].number;
}

// The next segment for a listener who has been there before: the one behind the last
// heard, known by its number, or by its address where the server has begun to count
// anew.
uint64_t continuationOf(const HlsPlaylist& list, const HlsPlace& place) {
  const uint64_t usual = startOf(list);
  const auto& segments = list.segments;
  if (!place.begun || segments.empty()) return usual;
  const auto same_number = std::find_if(segments.begin(), segments.end(), [&](const auto& each) {
    return each.number == place.number;
  });
  const auto same_file = std::find_if(segments.rbegin(), segments.rend(),
                                      [&](const auto& each) { return each.file == place.file; });
  uint64_t next = place.number + 1;
  const bool moved = same_number == segments.end() || !(same_number->file == place.file);
  if (moved && same_file != segments.rend()) next = same_file->number + 1;
  if (list.ended) return next;
  if (next > segments.back().number + 1) return usual;
  next = std::max(next, segments.front().number);
  const double lag = next < usual ? static_cast<double>(usual - next) * list.target_seconds : 0;
  return lag > kLongestLag ? usual : next;
}

}  // namespace

HlsList::HlsList(HlsPlaylist list, Url url, const Interrupt& interrupt, HlsPlace& place)
    : list_(std::move(list)),
      url_(std::move(url)),
      interrupt_(interrupt),
      place_(place),
      next_number_(continuationOf(list_, place_)),
      reload_at_(Clock::now() + interval(true)) {}

// A live list is asked for again after one segment's time, or half of it when it
// brought nothing.
std::chrono::milliseconds HlsList::interval(bool changed) const {
  const double seconds = list_.target_seconds * (changed ? 1 : 0.5);
  return milliseconds(std::clamp(seconds, kShortestWait, kLongestWait));
}

bool HlsList::takeNext(HlsSegment& segment) {
  const auto found = std::find_if(
      list_.segments.begin(), list_.segments.end(),
      [this](const HlsSegment& each) { return !each.gap && each.number >= next_number_; });
  if (found == list_.segments.end()) return false;
  segment = *found;
  segment.discontinuity = segment.discontinuity || skipped_ || segment.number > next_number_;
  skipped_ = false;
  next_number_ = segment.number + 1;
  return true;
}

NetError HlsList::next(HlsSegment& segment, bool& over) {
  over = false;
  for (;;) {
    if (takeNext(segment)) {
      last_news_ = Clock::now();
      return NetError::none;
    }
    if (list_.ended) {
      over = true;
      return NetError::none;
    }
    const double patience = std::max(kDeadSeconds, kDeadSegments * list_.target_seconds);
    if (Clock::now() - last_news_ > milliseconds(patience)) return NetError::timeout;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(reload_at_ - Clock::now());
    if (left.count() > 0 && interrupt_.wait(left)) return NetError::interrupted;
    if (const NetError error = reload(); error != NetError::none) return error;
  }
}

NetError HlsList::reload() {
  std::string text;
  const NetError error = fetchDocument(url_, interrupt_, kLargestList, text);
  if (error == NetError::interrupted || error == NetError::gone) return error;
  auto list = error == NetError::none ? parseHls(text) : std::nullopt;
  if (!list || !list->variants.empty() || list->foreign) {
    // The list may come back before the sound in hand is played; whoever begins anew
    // would hear some of it twice.
    reload_at_ = Clock::now() + interval(false);
    return NetError::none;
  }
  const uint64_t last = list->segments.empty() ? 0 : list->segments.back().number;
  const bool changed = !list->segments.empty() && last >= next_number_;
  // The server has begun to count anew.
  if (!list->segments.empty() && last + 1 < next_number_ && !list->ended) {
    next_number_ = continuationOf(*list, place_);
    skipped_ = true;
  }
  list_ = std::move(*list);
  reload_at_ = Clock::now() + interval(changed);
  return NetError::none;
}

}  // namespace engine
