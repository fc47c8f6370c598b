#include "engine/codec/id3.h"

#include <algorithm>
#include <string_view>

#include "engine/text/utf8.h"

namespace engine {
namespace {

constexpr size_t kHeader = 10;
constexpr size_t kFrameHeader = 10;
constexpr uint8_t kExtendedHeader = 0x40;

using Bytes = std::span<const uint8_t>;

// Four bytes, of which older versions use 8 and newer ones 7 bits each.
size_t sizeAt(Bytes bytes, size_t at, bool seven_bits) {
  size_t size = 0;
  for (size_t i = at; i < at + 4; ++i) {
    size = seven_bits ? size << 7 | (bytes[i] & 0x7fu) : size << 8 | bytes[i];
  }
  return size;
}

std::string_view textOf(Bytes bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// A text frame: its encoding, then text; of several texts the first.
std::string readText(Bytes frame) {
  if (frame.empty()) return {};
  const std::string_view text = textOf(frame.subspan(1));
  std::string read;
  switch (frame[0]) {
    case 0:
      read = utf8FromWindows1252(text);
      break;
    case 1:
    case 2:
      read = utf8FromUtf16(text, frame[0] == 2);
      break;
    default:
      read = text;
  }
  read.resize(std::min(read.find('\0'), read.size()));
  return read;
}

}  // namespace

size_t id3Length(std::span<const uint8_t> bytes) {
  if (bytes.size() < kHeader || textOf(bytes.first(3)) != "ID3") return 0;
  return kHeader + sizeAt(bytes, 6, true);
}

std::string id3Title(std::span<const uint8_t> tag) {
  const size_t length = std::min(id3Length(tag), tag.size());
  if (length == 0 || tag[3] < 3 || tag[3] > 4) return {};
  const bool newer = tag[3] == 4;
  size_t at = kHeader;
  if ((tag[5] & kExtendedHeader) != 0 && length >= at + 4) {
    // Version 4 counts the size's own four bytes, version 3 does not.
    at += sizeAt(tag, at, newer) + (newer ? 0 : 4);
  }
  std::string artist;
  std::string title;
  while (at + kFrameHeader <= length && tag[at] != 0) {
    const std::string_view name = textOf(tag.subspan(at, 4));
    const size_t size = sizeAt(tag, at + 4, newer);
    at += kFrameHeader;
    if (size > length - at) break;
    const Bytes frame = tag.subspan(at, size);
    if (name == "TPE1") artist = readText(frame);
    if (name == "TIT2") title = readText(frame);
    at += size;
  }
  return artist.empty() || title.empty() ? artist + title : artist + " - " + title;
}

}  // namespace engine
