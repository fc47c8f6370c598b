#include "demo_radio/request.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>

namespace demo_radio {
namespace {

constexpr std::size_t kLongestHead = 16384;
constexpr Milliseconds kIdleTimeout{15000};

std::string lower(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return result;
}

std::string percentDecoded(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size() &&
        std::isxdigit(static_cast<unsigned char>(text[i + 1])) != 0 &&
        std::isxdigit(static_cast<unsigned char>(text[i + 2])) != 0) {
      const std::string digits(text.substr(i + 1, 2));
      result += static_cast<char>(std::strtol(digits.c_str(), nullptr, 16));
      i += 2;
    } else {
      result += text[i];
    }
  }
  return result;
}

/// Cuts the text up to `end` off `rest`, and `end` with it.
std::string_view cut(std::string_view& rest, std::string_view end) {
  const std::size_t at = std::min(rest.find(end), rest.size());
  const std::string_view piece = rest.substr(0, at);
  rest.remove_prefix(std::min(rest.size(), at + end.size()));
  return piece;
}

}  // namespace

std::string Request::header(const std::string& name) const {
  const auto found = headers.find(name);
  return found == headers.end() ? std::string() : found->second;
}

bool Request::keepsAlive() const {
  return lower(header("connection")) != "close";
}

std::string Target::value(const std::string& name, const std::string& otherwise) const {
  const auto found = query.find(name);
  return found == query.end() ? otherwise : found->second;
}

int Target::number(const std::string& name, int otherwise) const {
  const std::string text = value(name);
  char* end = nullptr;
  const long result = std::strtol(text.c_str(), &end, 10);
  return text.empty() || *end != '\0' ? otherwise
                                      : static_cast<int>(std::clamp(result, 0L, 1L << 30));
}

Target parseTarget(std::string_view target) {
  Target result;
  result.path = percentDecoded(cut(target, "?"));
  while (!target.empty()) {
    std::string_view pair = cut(target, "&");
    const std::string name(cut(pair, "="));
    result.query[name] = percentDecoded(pair);
  }
  return result;
}

std::optional<Request> parseRequest(std::string_view head) {
  Request request;
  std::string_view line = cut(head, "\r\n");
  const std::size_t version = line.rfind(" HTTP/1.");
  const std::size_t blank = line.find(' ');
  if (version == std::string_view::npos || blank >= version) return std::nullopt;
  request.method = line.substr(0, blank);
  request.target = line.substr(blank + 1, version - blank - 1);
  if (line.back() == '0') request.headers["connection"] = "close";
  while (!head.empty()) {
    std::string_view field = cut(head, "\r\n");
    const std::string name = lower(cut(field, ":"));
    field.remove_prefix(std::min(field.find_first_not_of(' '), field.size()));
    request.headers[name] = field;
  }
  return request;
}

std::optional<Request> RequestReader::next() {
  for (;;) {
    const std::size_t end = buffer_.find("\r\n\r\n");
    if (end != std::string::npos) {
      std::optional<Request> request = parseRequest(std::string_view(buffer_).substr(0, end));
      buffer_.erase(0, end + 4);
      return request;
    }
    if (buffer_.size() > kLongestHead) return std::nullopt;
    std::array<char, 4096> piece{};
    const ssize_t size = socket_.receive(piece.data(), piece.size(), kIdleTimeout);
    if (size <= 0) return std::nullopt;
    buffer_.append(piece.data(), static_cast<std::size_t>(size));
  }
}

}  // namespace demo_radio
