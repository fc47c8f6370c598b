// A page of the directory scans as the plain, slow scan does.
#include <cstdint>
#include <cstdlib>

#include "directory/page.h"
#include "tests/page_oracle.h"

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
