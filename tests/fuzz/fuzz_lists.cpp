// What a server sends in place of sound, or around it: playlists, HLS lists, chunks,
// tags and container heads. Nothing in it may lead further than it says.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "engine/codec/container_headers.h"
#include "engine/codec/id3.h"
#include "engine/codec/ogg_pages.h"
#include "engine/hls/hls_playlist.h"
#include "engine/net/chunked_source.h"
#include "engine/text/playlist.h"
#include "engine/text/title.h"
#include "engine/text/utf8.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

void checkPlaylists(std::string_view text) {
  const std::string_view head = text.substr(0, 300);
  const auto kind = engine::bodyKind(head, "audio/x-mpegurl");
  require(kind != engine::BodyKind::undecided || head.size() < 256);
  for (const std::string& address : engine::playlistAddresses(text)) {
    require(!address.empty() && address.find_first_of("\r\n") == address.npos);
  }
  const auto list = engine::parseHls(text);
  if (!list) return;
  require(!list->variants.empty() || list->target_seconds >= 1);
  require(list->target_seconds <= 3600);
  const std::string choice = list->choice();
  require(choice.empty() == list->variants.empty());
  for (const engine::HlsSegment& each : list->segments) {
    const std::string range = each.file.range.header();
    require(range.empty() || each.file.range.length != 0);
    engine::titleTagOf(each.title);
  }
  for (size_t i = 1; i < list->segments.size(); ++i) {
    require(list->segments[i].number != list->segments[i - 1].number);
  }
}

std::vector<uint8_t> unchunk(const uint8_t* data, size_t size, size_t step) {
  engine::ChunkDecoder decoder;
  std::vector<uint8_t> contents;
  for (size_t at = 0; at < size; at += step) {
    decoder.feed(data + at, std::min(step, size - at), contents);
  }
  require(contents.size() <= size);
  return contents;
}

std::vector<uint8_t> readPages(const uint8_t* data, size_t size, size_t step) {
  size_t at = 0;
  engine::OggPages pages([&](uint8_t* to, int room) {
    const size_t count = std::min({step, size - at, static_cast<size_t>(room)});
    std::copy_n(data + at, count, to);
    at += count;
    return static_cast<int>(count);
  });
  std::vector<uint8_t> all;
  uint8_t some[100];
  for (int got = 0; (got = pages.read(some, sizeof some)) >= 0;) {
    if (got == 0) pages.nextLink();
    all.insert(all.end(), some, some + got);
  }
  require(all.size() <= size);
  return all;
}

void checkText(std::string_view text) {
  require(engine::isUtf8(engine::utf8FromWindows1252(text)));
  require(engine::isUtf8(engine::utf8FromUtf16(text, true)));
  require(text.starts_with(engine::withoutCutCharacter(text)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  checkPlaylists(text);
  checkText(text);
  require(unchunk(data, size, 1) == unchunk(data, size, size + 1));
  require(readPages(data, size, 7) == readPages(data, size, size + 1));
  engine::titleTagOf(engine::id3Title({data, size}));
  kestrel_format format = {};
  for (const auto recognise : {engine::recogniseOgg, engine::recogniseFlac}) {
    if (recognise({data, size}, &format) == KESTREL_YES) require(format.rate && format.channels);
  }
  return 0;
}
