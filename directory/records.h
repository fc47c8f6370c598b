#pragma once

#include <string>
#include <string_view>

#include "base/files.h"

namespace directory {

/// A line of a station list file: title, "%#$", address; own entries may have a
/// third field, the last day on which they are offered.
inline constexpr std::string_view kFieldSeparator = "%#$";

struct Record {
  std::string_view title;
  std::string_view url;
  std::string_view date;  ///< "yyyymmdd" of own entries; empty if there is none
};

/// Calls `use` with each line's record if it has at least a title and an address,
/// and with the number of its fields (4 stands for more as well).
template <typename Use>
void forEachRecord(std::string_view text, const Use& use) {
  base::Lines lines(text);
  for (std::string_view line; lines.next(line);) {
    if (line.size() <= 1) continue;
    const auto first = line.find(kFieldSeparator);
    if (first == line.npos) continue;
    const std::string_view rest = line.substr(first + kFieldSeparator.size());
    const auto second = rest.find(kFieldSeparator);
    Record record{line.substr(0, first), rest.substr(0, second), {}};
    int fields = 2;
    if (second != rest.npos) {
      record.date = rest.substr(second + kFieldSeparator.size());
      fields = record.date.find(kFieldSeparator) == rest.npos ? 3 : 4;
    }
    if (!record.title.empty() && !record.url.empty()) use(record, fields);
  }
}

/// Appends a line. Neither part may hold a line end.
void appendRecord(std::string& text, std::string_view title, std::string_view url);

/// The same for what belongs to the user: whatever stands in title and address, the
/// line is one record of two fields when it is read again. Line ends become blanks,
/// "%#$" becomes "%# $" in a title and "%25#$" in an address, where a percent sign
/// that begins no escape means just that.
void appendOwnRecord(std::string& text, std::string_view title, std::string_view url);

}  // namespace directory
