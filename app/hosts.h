#pragma once

#include <string>

namespace app {

/// The addresses that depend on who runs the service: a host or host:port each,
/// without scheme and path.
struct Hosts {
  std::string directory = "directory.kestrel.example";
  std::string update = "update.kestrel.example";
  std::string website = "www.kestrel.example";
  std::string donate = "donate.kestrel.example";
  std::string directorysite = "directory.kestrel.example";
  std::string audiosite = "audio.kestrel.example";
};

/// Reads "hosts.cfg" of the program folder; what is missing or empty there keeps
/// its default.
[[nodiscard]] Hosts readHosts(const std::string& file);

}  // namespace app
