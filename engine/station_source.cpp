#include "engine/station_source.h"

#include <algorithm>
#include <cstring>

#include "engine/hls/hls_source.h"
#include "engine/net/fetch.h"
#include "engine/text/playlist.h"

namespace engine {
namespace {

constexpr int kDeepest = 4;         ///< playlists in playlists
constexpr int kMostAddresses = 20;  ///< asked in all
constexpr size_t kLargestPlaylist = 4 << 20;

/// A source some of whose bytes have been read already.
class BegunSource final : public ByteSource {
 public:
  BegunSource(std::unique_ptr<ByteSource> source, std::string begin)
      : source_(std::move(source)), begin_(std::move(begin)) {}

  const ResponseHead& head() const override { return source_->head(); }
  bool isOver() const override { return taken_ == begin_.size() && source_->isOver(); }
  NetError read(uint8_t* to, size_t room, size_t& got) override {
    if (taken_ == begin_.size()) return source_->read(to, room, got);
    got = std::min(room, begin_.size() - taken_);
    std::memcpy(to, begin_.data() + taken_, got);
    taken_ += got;
    return NetError::none;
  }

 private:
  std::unique_ptr<ByteSource> source_;
  const std::string begin_;
  size_t taken_ = 0;
};

OpenedSource failed(NetError error) {
  OpenedSource opened;
  opened.error = error;
  return opened;
}

class Opener {
 public:
  Opener(const Interrupt& interrupt, const StatusSink& status, HlsPlace& place)
      : interrupt_(interrupt), status_(status), place_(place) {}

  OpenedSource open(const Url& url, const ByteRange& range, int depth);

 private:
  OpenedSource follow(OpenedSource& opened, int depth);
  OpenedSource followPlaylist(OpenedSource& opened, std::string text, int depth);
  OpenedSource followHls(const OpenedSource& opened, HlsPlaylist list, int depth);
  OpenedSource followPage(OpenedSource& opened, std::string text, int depth);

  const Interrupt& interrupt_;
  const StatusSink& status_;
  HlsPlace& place_;
  int asked_ = 0;
};

OpenedSource Opener::open(const Url& url, const ByteRange& range, int depth) {
  if (depth > kDeepest || ++asked_ > kMostAddresses) return failed(NetError::format);
  OpenedSource opened = openSource(url, interrupt_, status_, range);
  // A resumed file is known already.
  if (!opened.source || opened.source->head().status == 206) return opened;
  return follow(opened, depth);
}

OpenedSource Opener::follow(OpenedSource& opened, int depth) {
  const std::string type(opened.source->head().value("content-type"));
  std::string text;
  BodyKind kind = BodyKind::undecided;
  for (size_t got = 1; kind == BodyKind::undecided && got != 0;) {
    char some[256];
    const NetError error = opened.source->read(reinterpret_cast<uint8_t*>(some), sizeof some, got);
    if (error != NetError::none) return failed(error);
    text.append(some, got);
    kind = bodyKind(text, type);
  }
  if (kind == BodyKind::playlist) return followPlaylist(opened, std::move(text), depth);
  if (kind == BodyKind::page) return followPage(opened, std::move(text), depth);
  opened.source = std::make_unique<BegunSource>(std::move(opened.source), std::move(text));
  return std::move(opened);
}

OpenedSource Opener::followPlaylist(OpenedSource& opened, std::string text, int depth) {
  const NetError error = readDocument(*opened.source, kLargestPlaylist, text);
  if (error == NetError::interrupted || error == NetError::format) {
    return failed(error);
  }
  if (auto list = parseHls(text)) return followHls(opened, std::move(*list), depth);
  OpenedSource last = failed(NetError::format);
  for (const std::string& address : playlistAddresses(text)) {
    const auto url = resolveRedirect(opened.url, address);
    if (!url || asked_ >= kMostAddresses) continue;
    last = open(*url, {}, depth + 1);
    if (last.source || last.error == NetError::interrupted) break;
  }
  return last;
}

OpenedSource Opener::followHls(const OpenedSource& opened, HlsPlaylist list, int depth) {
  if (list.foreign) return failed(NetError::format);
  if (!list.variants.empty()) {
    const auto url = resolveRedirect(opened.url, list.choice());
    if (!url) return failed(NetError::format);
    return open(*url, {}, depth + 1);
  }
  auto source = std::make_unique<HlsSource>(std::move(list), opened.url, opened.source->head(),
                                            interrupt_, place_);
  return {std::move(source), NetError::none, opened.url};
}

// Some radio servers show a page about themselves at their root, to what they take
// for a browser, and the stream at an address that no browser asks for.
OpenedSource Opener::followPage(OpenedSource& opened, std::string text, int depth) {
  if (opened.url.path == "/" || opened.url.path == "/index.html") {
    Url url = opened.url;
    url.path = "/;";
    OpenedSource stream = open(url, {}, depth + 1);
    if (stream.source || stream.error == NetError::interrupted) return stream;
  }
  // The page itself: whoever asked sees that it is no sound.
  opened.source = std::make_unique<BegunSource>(std::move(opened.source), std::move(text));
  return std::move(opened);
}

}  // namespace

OpenedSource openStation(const Url& url, const Interrupt& interrupt, const StatusSink& status,
                         const ByteRange& range, HlsPlace& place) {
  return Opener(interrupt, status, place).open(url, range, 0);
}

}  // namespace engine
