#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Texts are 8-bit: bytes in, bytes out. Only ASCII letters know upper and lower
/// case here, whatever the locale.
namespace base {

[[nodiscard]] constexpr char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}
[[nodiscard]] std::string lowerCased(std::string_view text);

[[nodiscard]] bool equalsIgnoringCase(std::string_view a, std::string_view b);
/// Position of `needle` at or after `from`, or npos.
[[nodiscard]] std::size_t findIgnoringCase(std::string_view text, std::string_view needle,
                                           std::size_t from = 0);
/// Every occurrence of `needle` (not empty), from left to right.
[[nodiscard]] std::string replaceIgnoringCase(std::string_view text, std::string_view needle,
                                              std::string_view replacement);

/// Without leading and trailing blanks; tabs are no blanks.
[[nodiscard]] std::string_view trimBlanks(std::string_view text);

/// The pieces between separators, empty ones included: at least one.
[[nodiscard]] std::vector<std::string_view> split(std::string_view text,
                                                  std::string_view separator);

/// `text` up to the first `separator` and what stands behind it.
struct Pair {
  std::string_view key;
  std::optional<std::string_view> value;  ///< nothing without a separator
};
[[nodiscard]] Pair splitFirst(std::string_view text, char separator);

/// What stands behind the last `mark`; all of the text when there is none.
[[nodiscard]] std::string_view behindLast(std::string_view text, char mark);

/// Decimal number with blanks around it, a sign, "." or "," before the decimals
/// and an exponent, whatever the locale. Nothing for any other text.
[[nodiscard]] std::optional<double> toNumber(std::string_view text);
/// The same rounded to the nearest integer (half to even) of the given width;
/// nothing when it does not fit.
[[nodiscard]] std::optional<std::int16_t> toInt16(std::string_view text);
[[nodiscard]] std::optional<std::int32_t> toInt32(std::string_view text);
/// "True" and "False" in any case, and every number: 0 is false.
[[nodiscard]] std::optional<bool> toBoolean(std::string_view text);

/// `title` as a menu shows it: longer than `maxchar` characters it becomes its
/// first `maxchar` - 4 and " ...". A character is a code point of valid UTF-8,
/// else a byte.
[[nodiscard]] std::string cutTitle(std::string_view title, int maxchar);

/// With blanks for the characters that would break a record or a line of a file
/// in two: CR, LF and NUL.
[[nodiscard]] std::string oneLine(std::string_view text);

}  // namespace base
