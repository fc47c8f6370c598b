#include "engine/connection.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "engine/net/network_watch.h"
#include "engine/station_source.h"

namespace engine {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kFirstPause{500};
constexpr milliseconds kLongestPause{30'000};
// A second of a usual stream: a connection that brought this was a good one, and
// its loss is no sign that the next will fail.
constexpr uint64_t kGoodBytes = 16 * 1024;

std::optional<uint64_t> lengthOf(const ResponseHead& head) {
  const std::string_view text = head.value("content-length");
  uint64_t length = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), length);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return length;
}

bool isPage(const ResponseHead& head) {
  return head.value("content-type").starts_with("text/");
}

// Something that lies on a server's disk, and not the sound of the hour; the lengths
// that radio servers announce are made up.
bool isFile(const ResponseHead& head) {
  return lengthOf(head) && head.icyTags().empty() &&
         !(head.value("etag").empty() && head.value("last-modified").empty());
}

}  // namespace

Connection::Connection(Url url, const Interrupt& interrupt, StatusSink status)
    : url_(std::move(url)),
      interrupt_(interrupt),
      status_(std::move(status)),
      pause_(kFirstPause) {}

NetError Connection::open() {
  OpenedSource opened = tryOpen();
  if (!opened.source) return opened.error;
  source_ = std::move(opened.source);
  head_ = source_->head();
  if (isFile(head_)) file_length_ = lengthOf(head_);
  return NetError::none;
}

OpenedSource Connection::tryOpen() {
  try {
    return openStation(url_, interrupt_, status_, {file_length_ ? received_ : 0}, place_);
  } catch (const std::exception&) {  // no memory, or no thread to look the name up
    return {nullptr, NetError::failed};
  }
}

bool Connection::isComplete() const {
  if (!source_) return false;
  if (source_->isOver()) return true;
  return file_length_ ? received_ >= *file_length_ : lengthOf(head_) == brought_;
}

std::optional<std::string> Connection::takeTitle() {
  return source_->takeTitle();
}

bool Connection::openAgain() {
  close();
  if (brought_ >= kGoodBytes) pause_ = kFirstPause;
  NetworkWatch network;
  for (;;) {
    if (interrupt_.isSet()) return false;
    status_(std::string("reconnecting...") + '\0');
    if (pause(network)) return false;
    OpenedSource opened = tryOpen();
    if (opened.error == NetError::gone) return false;
    // A page instead of sound: a hotel's door, or a server in distress.
    if (!opened.source || isPage(opened.source->head())) continue;
    source_ = std::move(opened.source);
    head_ = source_->head();
    brought_ = 0;
    to_skip_ = file_length_ && head_.status != 206 ? received_ : 0;
    return true;
  }
}

// True once interrupted. What was out of reach may be in reach of another network: when
// it changes, no pause is longer than the first.
bool Connection::pause(NetworkWatch& network) {
  auto end = Clock::now() + std::exchange(pause_, std::min(pause_ * 2, kLongestPause));
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now());
    if (left.count() <= 0) return interrupt_.isSet();
    switch (network.wait(interrupt_, std::min(left, kWaitStep))) {
      case NetworkWatch::Woken::by_interrupt:
        return true;
      case NetworkWatch::Woken::by_change:
        pause_ = kFirstPause;
        end = std::min(end, Clock::now() + kFirstPause);
        break;
      case NetworkWatch::Woken::by_time:
        break;
    }
  }
}

NetError Connection::read(uint8_t* to, size_t room, size_t& got) {
  if (!source_) return NetError::failed;
  for (;;) {
    if (to_skip_ != 0 && to_skip_ < room) room = static_cast<size_t>(to_skip_);
    const NetError error = source_->read(to, room, got);
    if (error != NetError::none || got == 0) return error;
    brought_ += got;
    if (to_skip_ == 0) break;
    to_skip_ -= got;
  }
  received_ += got;
  return NetError::none;
}

}  // namespace engine
