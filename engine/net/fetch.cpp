#include "engine/net/fetch.h"

#include <array>

namespace engine {
namespace {

constexpr auto kWholeTime = std::chrono::seconds(15);

}  // namespace

NetError readDocument(ByteSource& source, size_t limit, std::string& document) {
  const auto deadline = Clock::now() + kWholeTime;
  std::array<uint8_t, 4096> some;
  for (;;) {
    size_t got = 0;
    const NetError error = source.read(some.data(), some.size(), got);
    if (error != NetError::none || got == 0) return error;
    document.append(reinterpret_cast<const char*>(some.data()), got);
    if (document.size() > limit) return NetError::format;
    if (Clock::now() > deadline) return NetError::timeout;
  }
}

NetError fetchDocument(Url& url, const Interrupt& interrupt, size_t limit, std::string& document) {
  const OpenedSource opened = openSource(url, interrupt, [](const std::string&) {});
  if (!opened.source) return opened.error;
  url = opened.url;
  document.clear();
  return readDocument(*opened.source, limit, document);
}

}  // namespace engine
