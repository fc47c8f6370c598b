#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace directory {

/// The parts of an http or https address that a request needs, as views of it.
/// Nothing is decoded or encoded: the target goes out as it stands.
struct Url {
  bool secure = false;
  std::string_view host;    ///< without brackets for an IPv6 address
  std::uint16_t port = 80;  ///< 1 to 65535
  std::string_view target;  ///< path and query; empty stands for "/"
};

/// Nothing for another scheme, an empty host, a port that is none, or a control
/// character anywhere (one would end the request line).
[[nodiscard]] std::optional<Url> splitUrl(std::string_view address);

}  // namespace directory
