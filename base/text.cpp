#include "base/text.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace base {
namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

std::size_t skipDigits(std::string_view text, std::size_t at) {
  while (at < text.size() && isDigit(text[at])) ++at;
  return at;
}

bool isOneOf(std::string_view text, std::size_t at, std::string_view set) {
  return at < text.size() && set.find(text[at]) != set.npos;
}

// sign? digits? ([.,] digits?)? ([eE] sign? digits)?, with a digit before the exponent
bool isDecimal(std::string_view text) {
  std::size_t at = isOneOf(text, 0, "+-") ? 1 : 0;
  const std::size_t whole = at;
  at = skipDigits(text, at);
  std::size_t digits = at - whole;
  if (isOneOf(text, at, ".,")) {
    const std::size_t decimals = at + 1;
    at = skipDigits(text, decimals);
    digits += at - decimals;
  }
  if (digits == 0) return false;
  if (isOneOf(text, at, "eE")) {
    ++at;
    if (isOneOf(text, at, "+-")) ++at;
    const std::size_t exponent = at;
    at = skipDigits(text, at);
    if (at == exponent) return false;
  }
  return at == text.size();
}

template <typename Integer>
std::optional<Integer> toInteger(std::string_view text) {
  const auto number = toNumber(text);
  if (!number) return std::nullopt;
  const double rounded = std::nearbyint(*number);
  if (rounded < std::numeric_limits<Integer>::min() ||
      rounded > std::numeric_limits<Integer>::max()) {
    return std::nullopt;
  }
  return static_cast<Integer>(rounded);
}

// Bytes of the code point at `at`, or 0 where the text is not UTF-8.
std::size_t codePointLength(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned first = byte(at);
  if (first < 0x80) return 1;
  const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4 || text.size() - at < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(at + i) & 0xc0) != 0x80) return 0;
  }
  // Overlong forms, surrogates, and beyond the last code point.
  const unsigned second = byte(at + 1);
  if ((first == 0xe0 && second < 0xa0) || (first == 0xed && second > 0x9f) ||
      (first == 0xf0 && second < 0x90) || (first == 0xf4 && second > 0x8f)) {
    return 0;
  }
  return length;
}

bool isUtf8(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = codePointLength(text, at);
    if (length == 0) return false;
    at += length;
  }
  return true;
}

// Where the first `count` characters end; npos when there are not more of them.
std::size_t endOfCharacters(std::string_view text, std::size_t count, bool utf8) {
  if (!utf8) return text.size() > count ? count : text.npos;
  std::size_t at = 0;
  while (at < text.size() && count > 0) {
    at += codePointLength(text, at);
    --count;
  }
  return at < text.size() ? at : text.npos;
}

}  // namespace

std::string lowerCased(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), lower);
  return result;
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lower(x) == lower(y); });
}

std::size_t findIgnoringCase(std::string_view text, std::string_view needle, std::size_t from) {
  if (from > text.size()) return text.npos;
  const auto found =
      std::search(text.begin() + static_cast<std::ptrdiff_t>(from), text.end(), needle.begin(),
                  needle.end(), [](char x, char y) { return lower(x) == lower(y); });
  if (found == text.end() && !needle.empty()) return text.npos;
  return static_cast<std::size_t>(found - text.begin());
}

std::string replaceIgnoringCase(std::string_view text, std::string_view needle,
                                std::string_view replacement) {
  std::string result;
  std::size_t done = 0;
  for (std::size_t at; (at = findIgnoringCase(text, needle, done)) != text.npos;) {
    result.append(text.substr(done, at - done)).append(replacement);
    done = at + needle.size();
  }
  return result.append(text.substr(done));
}

std::string_view trimBlanks(std::string_view text) {
  const auto first = text.find_first_not_of(' ');
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::vector<std::string_view> split(std::string_view text, std::string_view separator) {
  std::vector<std::string_view> pieces;
  for (;;) {
    const auto at = text.find(separator);
    pieces.push_back(text.substr(0, at));
    if (at == text.npos) return pieces;
    text.remove_prefix(at + separator.size());
  }
}

Pair splitFirst(std::string_view text, char separator) {
  const auto at = text.find(separator);
  if (at == text.npos) return {text, std::nullopt};
  return {text.substr(0, at), text.substr(at + 1)};
}

std::string_view behindLast(std::string_view text, char mark) {
  return text.substr(text.rfind(mark) + 1);  // npos + 1 is 0
}

std::optional<double> toNumber(std::string_view text) {
  std::string number(trimBlanks(text));
  if (!isDecimal(number)) return std::nullopt;
  std::replace(number.begin(), number.end(), ',', '.');
  // The program never leaves the "C" locale, so "." is what strtod wants.
  const double value = std::strtod(number.c_str(), nullptr);
  return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

std::optional<std::int16_t> toInt16(std::string_view text) {
  return toInteger<std::int16_t>(text);
}

std::optional<std::int32_t> toInt32(std::string_view text) {
  return toInteger<std::int32_t>(text);
}

std::optional<bool> toBoolean(std::string_view text) {
  const std::string_view word = trimBlanks(text);
  if (equalsIgnoringCase(word, "true")) return true;
  if (equalsIgnoringCase(word, "false")) return false;
  const auto number = toNumber(word);
  return number ? std::optional(*number != 0) : std::nullopt;
}

std::string cutTitle(std::string_view title, int maxchar) {
  const auto limit = static_cast<std::size_t>(std::max(maxchar, 0));
  if (title.size() <= limit) return std::string(title);
  const bool utf8 = isUtf8(title);
  if (endOfCharacters(title, limit, utf8) == title.npos) return std::string(title);
  const std::size_t kept = limit > 4 ? limit - 4 : 0;
  return std::string(title.substr(0, endOfCharacters(title, kept, utf8))) + " ...";
}

std::string oneLine(std::string_view text) {
  std::string line(text);
  const auto breaks = [](char c) { return c == '\r' || c == '\n' || c == '\0'; };
  std::replace_if(line.begin(), line.end(), breaks, ' ');
  return line;
}

}  // namespace base
