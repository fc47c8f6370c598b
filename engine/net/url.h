#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace engine {

/// An address of a stream.
struct Url {
  bool secure = false;  ///< https
  std::string host;     ///< name or address, without brackets
  uint16_t port = 80;
  std::string path = "/";  ///< with the query, ready for a request line

  /// "host" or "host:port" as a request names it.
  std::string hostHeader() const;
};

/// Nothing unless it is an http or https address with a host.
std::optional<Url> parseUrl(std::string_view text);

/// Where a redirect with that location leads: whole addresses, "//host/…", "/path"
/// and paths beside the present one.
std::optional<Url> resolveRedirect(const Url& from, std::string_view location);

}  // namespace engine
