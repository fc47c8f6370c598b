#include "engine/net/icy.h"

#include <algorithm>

#include "engine/text/any_case.h"

namespace engine {
namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

bool isNameCharacter(char c) {
  return isDigit(c) || c == '_' || (lower(c) >= 'a' && lower(c) <= 'z');
}

// "name:value" without the spaces around the value; empty for what is no such line.
std::string tidyLine(std::string_view line) {
  const size_t colon = line.find(':');
  if (colon == std::string_view::npos || colon == 0) return {};
  const size_t from = line.find_first_not_of(" \t", colon + 1);
  std::string tidy(line.substr(0, colon + 1));
  if (from != std::string_view::npos) {
    tidy += line.substr(from, line.find_last_not_of(" \t") + 1 - from);
  }
  // A zero would end the text early for those who read it as C does.
  std::erase(tidy, '\0');
  return tidy;
}

bool isTitleText(std::string_view text) {
  const auto end = std::find_if_not(text.begin(), text.end(), isNameCharacter);
  return end != text.begin() && end != text.end() && *end == '=';
}

}  // namespace

std::string_view ResponseHead::value(std::string_view name) const {
  for (const std::string& line : lines) {
    if (line.size() > name.size() && line[name.size()] == ':' && startsWithAnyCase(line, name)) {
      return std::string_view(line).substr(name.size() + 1);
    }
  }
  return {};
}

std::optional<uint32_t> ResponseHead::number(std::string_view name) const {
  const std::string_view text = value(name);
  if (text.empty() || text.size() > 9 || !std::all_of(text.begin(), text.end(), isDigit)) {
    return std::nullopt;
  }
  uint32_t number = 0;
  for (char c : text) number = number * 10 + static_cast<uint32_t>(c - '0');
  return number;
}

std::string ResponseHead::icyTags() const {
  std::string tags;
  for (const std::string& line : lines) {
    if (startsWithAnyCase(line, "icy-")) tags.append(line).push_back('\0');
  }
  if (!tags.empty()) tags.push_back('\0');
  return tags;
}

size_t headLength(std::string_view bytes) {
  for (size_t end = bytes.find('\n'); end != std::string_view::npos;
       end = bytes.find('\n', end + 1)) {
    if (bytes.substr(end + 1, 1) == "\n") return end + 2;
    if (bytes.substr(end + 1, 2) == "\r\n") return end + 3;
  }
  return 0;
}

std::optional<ResponseHead> parseHead(std::string_view text) {
  ResponseHead head;
  for (size_t from = 0; from < text.size();) {
    const size_t end = std::min(text.find('\n', from), text.size());
    std::string_view line = text.substr(from, end - from);
    from = end + 1;
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (head.status_line.empty()) {
      head.status_line = line;
      std::erase(head.status_line, '\0');
    } else if (std::string tidy = tidyLine(line); !tidy.empty()) {
      head.lines.push_back(std::move(tidy));
    }
  }
  const std::string& first = head.status_line;
  if (!first.starts_with("HTTP/") && !first.starts_with("ICY ")) return std::nullopt;
  const size_t code = first.find(' ') + 1;
  if (code == 0 || first.size() < code + 3 ||
      !std::all_of(first.begin() + static_cast<long>(code),
                   first.begin() + static_cast<long>(code) + 3, isDigit)) {
    return std::nullopt;
  }
  for (size_t i = code; i < code + 3; ++i) head.status = head.status * 10 + (first[i] - '0');
  return head;
}

void IcyReader::feed(const uint8_t* bytes, size_t length, const Sound& sound, const Title& title) {
  if (interval_ == 0) {
    if (length != 0) sound(bytes, length);
    return;
  }
  while (length != 0) {
    size_t step = 0;
    if (left_ != 0) {
      step = std::min<size_t>(left_, length);
      left_ -= static_cast<uint32_t>(step);
      sound(bytes, step);
    } else {
      const size_t whole = block_.empty() ? 1 : 1 + size_t{16} * block_.front();
      step = std::min(whole - block_.size(), length);
      block_.insert(block_.end(), bytes, bytes + step);
      if (block_.size() == 1 + size_t{16} * block_.front()) endBlock(sound, title);
    }
    bytes += step;
    length -= step;
  }
}

void IcyReader::endBlock(const Sound& sound, const Title& title) {
  left_ = interval_;
  const std::string text(block_.begin() + 1, block_.end());
  if (isTitleText(text)) {
    title(text);
  } else if (!text.empty() && text.front() != '\0') {
    sound(block_.data(), block_.size());
  }
  block_.clear();
}

}  // namespace engine
