#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "app/text.h"

/// The page scan in its plainest form, statement by statement with positions
/// from 1 and a failing statement leaving its variable alone. Quadratic.
inline std::vector<std::pair<std::string, std::string>> oracleScan(const std::string& page) {
  const auto find = [&](std::size_t from, std::string_view what) -> std::size_t {
    const auto at = app::findIgnoringCase(page, what, from - 1);
    return at == page.npos ? 0 : at + 1;
  };
  std::vector<std::pair<std::string, std::string>> stations;
  std::string title, link;
  std::size_t bracket = 0;
  for (std::size_t q = 1; (q = find(q, "kestrel-playlist.pls")) != 0;) {
    const std::size_t g = find(q, ">");
    if (q > 6 && g != 0) link = page.substr(q - 6 - 1, g - q + 5);
    q += 15;
    const std::size_t a = find(q, "<A");
    if (a != 0) bracket = find(a, ">");
    const std::size_t c = find(bracket + 1, "<");
    if (c != 0) title = page.substr(bracket, c - bracket - 1);
    stations.emplace_back(title, link);
  }
  return stations;
}
