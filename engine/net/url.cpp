#include "engine/net/url.h"

#include <algorithm>

#include "engine/text/any_case.h"

namespace engine {
namespace {

std::optional<uint16_t> parsePort(std::string_view text) {
  uint32_t port = 0;
  if (text.empty() || text.size() > 5) return std::nullopt;
  for (char c : text) {
    if (c < '0' || c > '9') return std::nullopt;
    port = port * 10 + static_cast<uint32_t>(c - '0');
  }
  if (port == 0 || port > 65535) return std::nullopt;
  return static_cast<uint16_t>(port);
}

// Spaces and control characters would break the request line; all else goes as it
// came, since only the server knows its own encoding.
std::string cleanPath(std::string_view text) {
  const std::string_view path = text.substr(0, text.find('#'));
  std::string clean;
  if (!path.starts_with('/')) clean += '/';
  for (char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte > 0x20 && byte != 0x7f) {
      clean += c;
    } else if (c == ' ') {
      clean += "%20";
    }
  }
  return clean;
}

// The path with its "." and ".." steps taken (RFC 3986, 5.2.4); the query is left.
std::string withoutDots(std::string_view path) {
  const size_t query = std::min(path.find('?'), path.size());
  std::string taken;
  for (size_t from = 0; from < query;) {
    const size_t end = std::min(path.find('/', from + 1), query);
    const std::string_view step = path.substr(from, end - from);
    if (step == "/..") {
      taken.resize(std::min(taken.rfind('/'), taken.size()));
      if (end == query) taken += '/';
    } else if (step != "/.") {
      taken += step;
    } else if (end == query) {
      taken += '/';
    }
    from = end;
  }
  if (taken.empty()) taken = "/";
  return taken.append(path.substr(query));
}

bool splitHost(std::string_view text, Url& url) {
  if (const size_t at = text.rfind('@'); at != std::string_view::npos) text.remove_prefix(at + 1);
  std::string_view port;
  if (text.starts_with('[')) {
    const size_t close = text.find(']');
    if (close == std::string_view::npos) return false;
    url.host = text.substr(1, close - 1);
    text.remove_prefix(close + 1);
    if (!text.empty() && text.front() != ':') return false;
    port = text;
  } else {
    const size_t colon = text.find(':');
    url.host = text.substr(0, colon);
    port = colon == std::string_view::npos ? std::string_view() : text.substr(colon);
  }
  if (port.size() > 1) {
    const auto number = parsePort(port.substr(1));
    if (!number) return false;
    url.port = *number;
  }
  return !url.host.empty() && std::all_of(url.host.begin(), url.host.end(), [](char c) {
    return static_cast<unsigned char>(c) > 0x20 && c != 0x7f;
  });
}

}  // namespace

std::string Url::hostHeader() const {
  std::string text;
  const bool address6 = host.find(':') != std::string::npos;
  if (address6) text += '[';
  text += host;
  if (address6) text += ']';
  if (port != (secure ? 443 : 80)) text.append(1, ':').append(std::to_string(port));
  return text;
}

std::optional<Url> parseUrl(std::string_view text) {
  while (!text.empty() && static_cast<unsigned char>(text.back()) <= ' ') text.remove_suffix(1);
  while (!text.empty() && static_cast<unsigned char>(text.front()) <= ' ') text.remove_prefix(1);
  Url url;
  if (startsWithAnyCase(text, "https://")) {
    url.secure = true;
    url.port = 443;
    text.remove_prefix(8);
  } else if (startsWithAnyCase(text, "http://")) {
    text.remove_prefix(7);
  } else {
    return std::nullopt;
  }
  const size_t end = std::min(text.find_first_of("/?#"), text.size());
  if (!splitHost(text.substr(0, end), url)) return std::nullopt;
  url.path = cleanPath(text.substr(end));
  return url;
}

std::optional<Url> resolveRedirect(const Url& from, std::string_view location) {
  if (location.empty()) return std::nullopt;
  if (location.starts_with("//")) {
    return parseUrl((from.secure ? "https:" : "http:") + std::string(location));
  }
  if (location.find("://") != std::string_view::npos &&
      location.find("://") < location.find_first_of("/?#")) {
    return parseUrl(location);
  }
  Url url = from;
  if (location.front() == '/') {
    url.path = withoutDots(cleanPath(location));
  } else {
    const std::string_view folder = std::string_view(from.path).substr(0, from.path.find('?'));
    url.path = withoutDots(
        cleanPath(std::string(folder.substr(0, folder.rfind('/') + 1)) + std::string(location)));
  }
  return url;
}

}  // namespace engine
