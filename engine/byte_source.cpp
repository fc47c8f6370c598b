#include "engine/byte_source.h"

namespace engine {
namespace {

constexpr int kMostRedirects = 10;

std::string headTexts(const ResponseHead& head) {
  std::string texts = head.status_line + '\0';
  for (const std::string& line : head.lines) texts += line + '\0';
  return texts;
}

bool isRedirect(int status) {
  return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

}  // namespace

OpenedSource openSource(const Url& url, const Interrupt& interrupt, const StatusSink& status) {
  Url next = url;
  for (int hop = 0; hop <= kMostRedirects; ++hop) {
    const auto open = next.secure ? openHttps : openHttp;
    OpenedSource opened = open(next, interrupt, status);
    if (!opened.source) return opened;
    const ResponseHead& head = opened.source->head();
    status(headTexts(head));
    if (head.status == 200) return opened;
    if (!isRedirect(head.status)) break;
    const auto target = resolveRedirect(next, head.value("location"));
    if (!target) break;
    next = *target;
  }
  return {nullptr, NetError::failed};
}

}  // namespace engine
