#pragma once

#include <cstdint>
#include <string>

namespace engine {

/// A piece of what is at an address.
struct ByteRange {
  uint64_t from = 0;
  uint64_t length = 0;  ///< 0: to the end

  bool operator==(const ByteRange&) const = default;
  bool isAll() const { return from == 0 && length == 0; }
  /// The request's header line that asks for it; empty for all.
  std::string header() const {
    if (isAll()) return {};
    const std::string last = length == 0 ? "" : std::to_string(from + length - 1);
    return "Range: bytes=" + std::to_string(from) + "-" + last + "\r\n";
  }
};

}  // namespace engine
