#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "demo_radio/socket.h"

namespace demo_radio {

/// One request as it came. The target may hold blanks and any bytes: directory
/// clients send search words as they were typed.
struct Request {
  std::string method;
  std::string target;
  std::map<std::string, std::string> headers;  ///< names in lower case

  [[nodiscard]] std::string header(const std::string& name) const;
  [[nodiscard]] bool keepsAlive() const;
};

/// "/path?query" taken apart. Values are percent-decoded where they are encoded.
struct Target {
  std::string path;
  std::map<std::string, std::string> query;

  [[nodiscard]] std::string value(const std::string& name, const std::string& otherwise = {}) const;
  [[nodiscard]] int number(const std::string& name, int otherwise) const;
};
Target parseTarget(std::string_view target);

/// Nothing when the head is no HTTP request.
std::optional<Request> parseRequest(std::string_view head);

/// Reads one connection's requests, one after the other.
class RequestReader {
 public:
  explicit RequestReader(Socket& socket) : socket_(socket) {}
  /// Nothing at the end of the connection, after 15 idle seconds, or for a head
  /// that is no HTTP or longer than 16 kB.
  std::optional<Request> next();

 private:
  Socket& socket_;
  std::string buffer_;
};

}  // namespace demo_radio
