#include "directory/url.h"

#include <algorithm>
#include <charconv>
#include <string>

namespace directory {
namespace {

bool takePrefix(std::string_view& text, std::string_view lower_prefix) {
  const auto matches = [](char have, char want) {
    return (have >= 'A' && have <= 'Z' ? static_cast<char>(have + ('a' - 'A')) : have) == want;
  };
  if (text.size() < lower_prefix.size() ||
      !std::equal(lower_prefix.begin(), lower_prefix.end(), text.begin(),
                  [&](char want, char have) { return matches(have, want); })) {
    return false;
  }
  text.remove_prefix(lower_prefix.size());
  return true;
}

bool readPort(std::string_view digits, std::uint16_t& port) {
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
  return error == std::errc() && end == digits.data() + digits.size() && port != 0;
}

}  // namespace

std::optional<Url> splitUrl(std::string_view address) {
  const auto is_control = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7f; };
  if (std::any_of(address.begin(), address.end(), is_control)) return std::nullopt;

  Url url;
  if (takePrefix(address, "https://")) {
    url.secure = true;
    url.port = 443;
  } else if (!takePrefix(address, "http://")) {
    return std::nullopt;
  }

  std::string_view authority = address.substr(0, address.find_first_of("/?#"));
  url.target = address.substr(authority.size());
  if (const auto at = authority.rfind('@'); at != authority.npos) authority.remove_prefix(at + 1);

  const auto bracket = authority.find(']');
  const auto colon = authority.find(':', bracket == authority.npos ? 0 : bracket);
  if (colon != authority.npos) {
    if (!readPort(authority.substr(colon + 1), url.port)) return std::nullopt;
    authority = authority.substr(0, colon);
  }
  if (authority.size() > 2 && authority.front() == '[' && authority.back() == ']') {
    authority = authority.substr(1, authority.size() - 2);
  }
  if (authority.empty()) return std::nullopt;
  url.host = authority;
  return url;
}

}  // namespace directory
