// A page of the directory scans as the plain, slow scan does.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "base/text.h"
#include "directory/page.h"

namespace {

// The page scan in its plainest form, statement by statement with positions
// from 1 and a failing statement leaving its variable alone. Quadratic.
std::vector<std::pair<std::string, std::string>> oracleScan(const std::string& page) {
  const auto find = [&](std::size_t from, std::string_view what) -> std::size_t {
    const auto at = base::findIgnoringCase(page, what, from - 1);
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string page(reinterpret_cast<const char*>(data), size);
  const auto stations = directory::scanPage(page);
  const auto expected = oracleScan(page);
  std::size_t text = 0;
  for (std::size_t i = 0; i < stations.size(); ++i) {
    if (i >= expected.size() || stations[i].title != expected[i].first ||
        stations[i].link != expected[i].second) {
      std::abort();
    }
    text += stations[i].title.size() + stations[i].link.size();
  }
  // Only a page whose stations share most of their text may end early.
  if (stations.size() < expected.size()) {
    const auto& [title, link] = expected[stations.size()];
    if (text + title.size() + link.size() <= 4 * size) std::abort();
  }
  return 0;
}
