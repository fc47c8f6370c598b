#include "engine/net/http_source.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "engine/net/chunked_source.h"
#include "engine/text/any_case.h"

namespace engine {
namespace {

using std::chrono::seconds;

constexpr auto kConnectTime = seconds(6);
constexpr auto kAnswerTime = seconds(10);
// Silence on an open connection: longer than a server's or a network's hiccup.
constexpr auto kSilenceTime = seconds(10);
constexpr size_t kLongestHead = 64 * 1024;

class HttpSource final : public ByteSource {
 public:
  HttpSource(std::unique_ptr<Link> link, const Interrupt& interrupt)
      : interrupt_(interrupt), link_(std::move(link)) {}

  NetError open(const Url& url, const StatusSink& status, const Asking& asking);
  const ResponseHead& head() const override { return head_; }
  NetError read(uint8_t* to, size_t room, size_t& got) override;

 private:
  NetError connect(const Url& url);
  NetError readHead(Clock::time_point deadline);

  const Interrupt& interrupt_;
  const std::unique_ptr<Link> link_;
  ResponseHead head_;
  std::string early_;  ///< body bytes that came with the head
  size_t early_taken_ = 0;
};

std::string requestText(const Url& url, const Asking& asking) {
  return "GET " + url.path + (asking.newer ? " HTTP/1.1" : " HTTP/1.0") +
         "\r\nHost: " + url.hostHeader() +
         "\r\nUser-Agent: Kestrel/" KESTREL_VERSION "\r\nAccept: */*\r\nIcy-MetaData: 1\r\n" +
         asking.range.header() + "Connection: close\r\n\r\n";
}

NetError HttpSource::open(const Url& url, const StatusSink& status, const Asking& asking) {
  status(std::string("connecting...") + '\0');
  if (const NetError error = connect(url); error != NetError::none) return error;
  status(std::string("waiting for the server...") + '\0');
  const auto deadline = Clock::now() + kAnswerTime;
  const NetError error = link_->sendAll(requestText(url, asking), deadline);
  return error != NetError::none ? error : readHead(deadline);
}

NetError HttpSource::connect(const Url& url) {
  const auto deadline = Clock::now() + kConnectTime;
  std::vector<Address> addresses;
  NetError error = resolveHost(url.host, url.port, interrupt_, deadline, addresses);
  for (size_t i = 0; i < addresses.size(); ++i) {
    // Each address gets its share of what is left, so that a dead one leaves time
    // for the next.
    const auto now = Clock::now();
    const auto share = (deadline - now) / static_cast<int>(addresses.size() - i);
    error = link_->connect(addresses[i], now + share);
    if (error == NetError::none || error == NetError::interrupted) break;
  }
  return error;
}

NetError HttpSource::readHead(Clock::time_point deadline) {
  std::array<uint8_t, 4096> some;
  size_t length = 0;
  while (length == 0) {
    size_t got = 0;
    const NetError error = link_->receive(some.data(), some.size(), deadline, got);
    if (error != NetError::none) return error;
    if (got == 0 || early_.size() + got > kLongestHead) return NetError::failed;
    early_.append(reinterpret_cast<const char*>(some.data()), got);
    length = headLength(early_);
  }
  auto head = parseHead(std::string_view(early_).substr(0, length));
  if (!head) return NetError::unsupported;
  head_ = std::move(*head);
  early_taken_ = length;
  return NetError::none;
}

NetError HttpSource::read(uint8_t* to, size_t room, size_t& got) {
  if (early_taken_ < early_.size()) {
    got = std::min(room, early_.size() - early_taken_);
    std::memcpy(to, early_.data() + early_taken_, got);
    early_taken_ += got;
    if (early_taken_ == early_.size()) {
      early_.clear();
      early_taken_ = 0;
    }
    return NetError::none;
  }
  return link_->receive(to, room, Clock::now() + kSilenceTime, got);
}

}  // namespace

OpenedSource openOver(std::unique_ptr<Link> link, const Url& url, const Interrupt& interrupt,
                      const StatusSink& status, const Asking& asking) {
  auto source = std::make_unique<HttpSource>(std::move(link), interrupt);
  const NetError error = source->open(url, status, asking);
  if (error != NetError::none) return {nullptr, error};
  const bool chunked = startsWithAnyCase(source->head().value("transfer-encoding"), "chunked");
  if (!chunked) return {std::move(source), NetError::none};
  return {std::make_unique<ChunkedSource>(std::move(source)), NetError::none};
}

OpenedSource openHttp(const Url& url, const Interrupt& interrupt, const StatusSink& status,
                      const Asking& asking) {
  return openOver(std::make_unique<Socket>(interrupt), url, interrupt, status, asking);
}

}  // namespace engine
