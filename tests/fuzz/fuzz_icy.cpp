// A radio server may say what it likes: its head, its titles, its redirects and its
// sound come out in order, whole, and the same however the bytes arrived.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "engine/codec/frame_headers.h"
#include "engine/net/icy.h"
#include "engine/net/url.h"
#include "engine/text/title.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

bool isPlain(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) { return c == '\0' || c == '\n'; });
}

struct Heard {
  std::string sound, titles;
  bool operator==(const Heard&) const = default;
};

Heard readAll(uint32_t interval, const uint8_t* data, size_t size, size_t step) {
  engine::IcyReader reader(interval);
  Heard heard;
  for (size_t at = 0; at < size; at += step) {
    reader.feed(
        data + at, std::min(step, size - at),
        [&](const uint8_t* bytes, size_t length) { heard.sound.append(bytes, bytes + length); },
        [&](const std::string& block) {
          require(!block.empty());
          heard.titles += std::to_string(heard.sound.size()) + block + '\n';
        });
  }
  require(heard.sound.size() <= size);
  return heard;
}

void checkHead(std::string_view text) {
  const size_t length = engine::headLength(text);
  require(length <= text.size());
  const auto head = engine::parseHead(text);
  if (!head) return;
  require(head->status >= 0 && head->status <= 999 && isPlain(head->status_line));
  require(std::all_of(head->lines.begin(), head->lines.end(), isPlain));
  const std::string tags = head->icyTags();
  require(tags.empty() || tags.ends_with(std::string_view("\0\0", 2)));
  const auto interval = head->number("icy-metaint");
  require(!interval || *interval <= 999'999'999);
}

// The player shows all up to one before the first semicolon: that must be the quote
// behind the title.
void checkTitle(std::string_view block) {
  const auto tag = engine::titleTag(block);
  if (!tag) return;
  require(tag->starts_with("StreamTitle='") && isPlain(*tag));
  const size_t semicolon = tag->find(';');
  require(semicolon != tag->npos && semicolon > 13 && (*tag)[semicolon - 1] == '\'');
  const std::string bare = engine::titleTagOf(block);
  require(bare.find(';') == bare.size() - 1);
}

void checkUrl(std::string_view text) {
  const auto good = [](const engine::Url& url) {
    const auto clean = [](std::string_view part) {
      return std::all_of(part.begin(), part.end(),
                         [](char c) { return static_cast<unsigned char>(c) > ' '; });
    };
    require(!url.host.empty() && url.port != 0 && url.path.starts_with('/'));
    require(clean(url.host) && clean(url.path));
  };
  if (const auto url = engine::parseUrl(text)) good(*url);
  if (const auto url = engine::resolveRedirect({false, "a", 80, "/b/c"}, text)) good(*url);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
  const uint32_t interval = data[0] % 32;
  require(readAll(interval, data + 1, size - 1, 1) == readAll(interval, data + 1, size - 1, size));
  checkHead(text);
  checkTitle(text);
  checkUrl(text);
  kestrel_format format = {};
  for (const auto header : {engine::mpegAudioHeader, engine::adtsHeader, engine::loasHeader}) {
    if (engine::recogniseFrames({data, size}, header, &format) == KESTREL_YES) {
      require(format.rate != 0 && format.bitrate != 0);
    }
  }
  return 0;
}
