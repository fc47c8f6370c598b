#include "directory/page.h"

#include <cstddef>
#include <cstring>

#include "base/text.h"
#include "directory/marker_search.h"

namespace directory {
namespace {

// Positions count from 1 here and 0 says "not found": with them the outcome for
// broken pages follows by itself.
using Position = std::size_t;

Position find(std::string_view page, char wanted, Position from) {
  if (from > page.size()) return 0;
  const char* const start = page.data() + (from - 1);
  const void* found = std::memchr(start, wanted, page.size() - (from - 1));
  return found == nullptr
             ? 0
             : static_cast<Position>(static_cast<const char*>(found) - page.data()) + 1;
}

Position findBracket(std::string_view page, Position from) {
  return find(page, '>', from);
}

Position findTag(std::string_view page, Position from) {
  return find(page, '<', from);
}

Position findAnchor(std::string_view page, Position from) {
  Position at = find(page, '<', from);
  while (at != 0 && (at >= page.size() || base::lower(page[at]) != 'a')) {
    at = find(page, '<', at + 1);
  }
  return at;
}

// A search that remembers its last answer: stations that share what follows them
// would otherwise be searched for it over and over, to the end of the page.
template <Position Find(std::string_view, Position)>
class Search {
 public:
  explicit Search(std::string_view page) : page_(page) {}

  Position from(Position start) {
    const bool known = asked_ != 0 && start >= asked_ && (found_ == 0 || start <= found_);
    if (!known) {
      asked_ = start;
      found_ = Find(page_, start);
    }
    return found_;
  }

 private:
  std::string_view page_;
  Position asked_ = 0;
  Position found_ = 0;
};

class PageScan {
 public:
  explicit PageScan(std::string_view page)
      : page_(page), link_end_(page), anchor_(page), anchor_end_(page), title_end_(page) {}

  std::vector<PageStation> run() {
    std::vector<PageStation> stations;
    // Stations of a sane page do not share text. Where they do, a small page could
    // stand for gigabytes: such a page ends when it has been told several times.
    std::size_t budget = 65'536 + 4 * page_.size();
    for (std::size_t at = 0; (at = findMarker(page_, at)) != page_.npos; at += kAdvance) {
      readLink(at + 1);
      readTitle(at + 1 + kAdvance);
      const std::size_t text = station_.link.size() + station_.title.size();
      if (text > budget) break;
      budget -= text;
      stations.push_back(station_);
    }
    return stations;
  }

 private:
  static constexpr std::size_t kAdvance = 15;  // from one marker to the next search
  static constexpr std::size_t kBefore = 6;    // of the link, in front of the marker

  void readLink(Position marker) {
    const Position end = link_end_.from(marker);
    if (end == 0 || marker <= kBefore) return;
    // Up to the character before the one before ">": the closing quote is not in it.
    station_.link = page_.substr(marker - kBefore - 1, end - marker + kBefore - 1);
  }

  void readTitle(Position from) {
    const Position anchor = anchor_.from(from);
    if (anchor != 0) bracket_ = anchor_end_.from(anchor);
    const Position end = title_end_.from(bracket_ + 1);
    if (end == 0) return;
    station_.title = page_.substr(bracket_, end - bracket_ - 1);
  }

  std::string_view page_;
  Search<findBracket> link_end_;
  Search<findAnchor> anchor_;
  Search<findBracket> anchor_end_;
  Search<findTag> title_end_;
  Position bracket_ = 0;  // end of the last anchor's tag
  PageStation station_;
};

}  // namespace

std::vector<PageStation> scanPage(std::string_view page) {
  return PageScan(page).run();
}

}  // namespace directory
