#include "engine/text/utf8.h"

#include <algorithm>

namespace engine {
namespace {

// 0x80 to 0x9f; the rest of Windows-1252 is Unicode's own beginning. Its five holes
// stand for the control characters there.
constexpr char16_t kWindows1252[32] = {
    0x20ac, 0x0081, 0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021, 0x02c6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008d, 0x017d, 0x008f, 0x0090, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022,
    0x2013, 0x2014, 0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0x009d, 0x017e, 0x0178};

unsigned char byteAt(std::string_view text, size_t at) {
  return static_cast<unsigned char>(text[at]);
}

bool continues(std::string_view text, size_t at) {
  return (byteAt(text, at) & 0xc0) == 0x80;
}

// Length that a first byte announces, 0 for one that begins nothing.
size_t announcedLength(unsigned char first) {
  if (first < 0x80) return 1;
  if (first >= 0xc2 && first <= 0xdf) return 2;
  if (first >= 0xe0 && first <= 0xef) return 3;
  return first >= 0xf0 && first <= 0xf4 ? 4 : 0;
}

}  // namespace

size_t characterLength(std::string_view text) {
  if (text.empty()) return 0;
  const unsigned char first = byteAt(text, 0);
  const size_t length = announcedLength(first);
  if (length == 0 || length > text.size()) return 0;
  for (size_t i = 1; i < length; ++i) {
    if (!continues(text, i)) return 0;
  }
  if (length < 3) return length;
  // Too long a form, a surrogate, or beyond the last character.
  const unsigned char second = byteAt(text, 1);
  const bool wrong = (first == 0xe0 && second < 0xa0) || (first == 0xed && second > 0x9f) ||
                     (first == 0xf0 && second < 0x90) || (first == 0xf4 && second > 0x8f);
  return wrong ? 0 : length;
}

bool isUtf8(std::string_view text) {
  while (!text.empty()) {
    const size_t length = characterLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

void appendUtf8(std::string& text, char32_t character) {
  if (character > 0x10ffff || (character >= 0xd800 && character < 0xe000)) character = 0xfffd;
  if (character < 0x80) {
    text += static_cast<char>(character);
    return;
  }
  const int more = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
  constexpr unsigned kFirst[] = {0, 0xc0, 0xe0, 0xf0};
  text += static_cast<char>(kFirst[more] | character >> (6 * more));
  for (int i = more - 1; i >= 0; --i) text += static_cast<char>(0x80 | (character >> (6 * i) & 63));
}

std::string utf8FromWindows1252(std::string_view text) {
  std::string converted;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    appendUtf8(converted, byte >= 0x80 && byte < 0xa0 ? kWindows1252[byte - 0x80] : byte);
  }
  return converted;
}

std::string utf8FromUtf16(std::string_view bytes, bool big_endian) {
  const auto unit = [&](size_t at) -> char32_t {
    const char32_t first = byteAt(bytes, at);
    const char32_t second = byteAt(bytes, at + 1);
    return big_endian ? first << 8 | second : second << 8 | first;
  };
  if (bytes.starts_with("\xff\xfe")) big_endian = false;
  if (bytes.starts_with("\xfe\xff")) big_endian = true;
  std::string converted;
  for (size_t at = 0; at + 1 < bytes.size(); at += 2) {
    char32_t character = unit(at);
    if (character == 0xfeff && at == 0) continue;
    const bool high = character >= 0xd800 && character < 0xdc00;
    if (high && at + 3 < bytes.size() && (unit(at + 2) & 0xfc00) == 0xdc00) {
      character = 0x10000 + ((character - 0xd800) << 10) + (unit(at + 2) - 0xdc00);
      at += 2;
    }
    appendUtf8(converted, character);
  }
  return converted;
}

std::string_view withoutCutCharacter(std::string_view text) {
  size_t from = text.size();
  while (from != 0 && text.size() - from < 3 && continues(text, from - 1)) --from;
  if (from == 0) return text;
  --from;
  const size_t announced = announcedLength(byteAt(text, from));
  const std::string_view rest = text.substr(0, from);
  return announced > text.size() - from && isUtf8(rest) ? rest : text;
}

}  // namespace engine
