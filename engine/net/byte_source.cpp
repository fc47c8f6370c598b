#include "engine/net/byte_source.h"

namespace engine {
namespace {

constexpr int kMostRedirects = 10;

std::string headTexts(const ResponseHead& head) {
  std::string texts = head.status_line + '\0';
  for (const std::string& line : head.lines) texts += line + '\0';
  return texts;
}

bool beginsAt(const ResponseHead& head, uint64_t from) {
  return head.status == 206 &&
         head.value("content-range").starts_with("bytes " + std::to_string(from) + "-");
}

// Nothing there, or nothing behind what was read already (416). Not the same as
// refusing: a station that is full or has no source now may have one soon. Radio
// servers of the ICY kind use their numbers for anything.
bool isFinal(const ResponseHead& head) {
  const bool final = head.status == 404 || head.status == 410 || head.status == 416;
  return final && head.status_line.starts_with("HTTP/");
}

bool isRedirect(int status) {
  return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

// Some gateways speak no HTTP 1.0 (RFC 9110: upgrade required, version not supported).
bool wantsNewer(const ResponseHead& head) {
  return head.status == 426 || head.status == 505;
}

}  // namespace

OpenedSource openSource(const Url& url, const Interrupt& interrupt, const StatusSink& status,
                        const ByteRange& range) {
  Url next = url;
  Asking asking{range};
  for (int hop = 0; hop <= kMostRedirects; ++hop) {
    const auto open = next.secure ? openHttps : openHttp;
    OpenedSource opened = open(next, interrupt, status, asking);
    if (!opened.source) return opened;
    opened.url = next;
    const ResponseHead head = opened.source->head();
    status(headTexts(head));
    if (head.status == 200 || (!range.isAll() && beginsAt(head, range.from))) return opened;
    if (isFinal(head)) return {nullptr, NetError::gone};
    if (wantsNewer(head) && !asking.newer) {
      asking.newer = true;
      continue;
    }
    if (!isRedirect(head.status)) break;
    const auto target = resolveRedirect(next, head.value("location"));
    if (!target) break;
    next = *target;
  }
  return {nullptr, NetError::failed};
}

}  // namespace engine
