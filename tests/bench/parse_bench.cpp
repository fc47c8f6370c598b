// How fast a directory page is scanned, against one pass of memmem over the same
// bytes, and how long the caches of a start take. Ratios count: all of it is one
// run on one machine. Exit code 1 when the scan is slower than half of memmem.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "app/files.h"
#include "directory/marker_search.h"
#include "directory/page.h"
#include "directory/station_lists.h"

namespace {

constexpr std::size_t kPage = std::size_t{64} << 20;
constexpr std::size_t kStations = 20'000;

// Rows as the directory writes them, with text between them up to the size.
std::string makePage(std::size_t size, std::size_t stations) {
  std::string page;
  page.reserve(size);
  const std::string filler =
      "<td nowrap align=\"center\"><font size=\"2\" face=\"Arial\">Now playing: a "
      "track</font></td>\n";
  for (std::size_t i = 0; i < stations; ++i) {
    const std::string number = std::to_string(i);
    page += "<a href=\"/sbin/kestrel-playlist.pls?rn=" + number +
            "&file=filename.pls\"><img src=\"t.gif\"></a><a href=\"http://station" + number +
            ".example/\">Station number " + number + "</a>\n";
    while (page.size() < size / stations * (i + 1)) page += filler;
  }
  page.resize(size, '\n');
  return page;
}

// Milliseconds of the fastest of several rounds.
template <typename Work>
double fastest(const Work& work, int rounds = 9) {
  double best = 1e9;
  for (int i = 0; i < rounds; ++i) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    best = std::min(best, took.count());
  }
  return best;
}

std::size_t countByMemmem(const std::string& page) {
  const auto marker = directory::kMarker;
  std::size_t count = 0;
  const char* at = page.data();
  const char* const end = at + page.size();
  while (const void* found =
             ::memmem(at, static_cast<std::size_t>(end - at), marker.data(), marker.size())) {
    ++count;
    at = static_cast<const char*>(found) + 15;
  }
  return count;
}

double scanTime(const std::string& page, std::size_t expected) {
  std::size_t found = 0;
  const double time = fastest([&] { found = directory::scanPage(page).size(); });
  if (found != expected) {
    std::printf("found %zu stations instead of %zu\n", found, expected);
    std::exit(2);
  }
  return time;
}

double pageBench() {
  const std::string page = makePage(kPage, kStations);
  std::size_t counted = 0;
  const double memmem_ms = fastest([&] { counted = countByMemmem(page); });
  if (counted != kStations) std::exit(2);
  const double scan_ms = scanTime(page, kStations);
  const auto speed = [](double ms) { return double(kPage) / ms / 1e6; };
  std::printf(
      "page of 64 MiB, 20000 stations: scan %.1f ms (%.1f GB/s), memmem %.1f ms (%.1f GB/s), "
      "speed ratio %.2f\n",
      scan_ms, speed(scan_ms), memmem_ms, speed(memmem_ms), memmem_ms / scan_ms);
  const double quarter_ms = scanTime(makePage(kPage / 4, kStations / 4), kStations / 4);
  std::printf("a quarter of it: %.1f ms, %.2f of the time\n", quarter_ms, quarter_ms / scan_ms);
  return memmem_ms / scan_ms;
}

// Pages in which plain searching for what is not there would be quadratic.
void hostileBench() {
  const std::pair<const char*, const char*> pages[] = {
      {"markers only", "kestrel-playlist.pls"},
      {"markers and tags that are no anchors", "/sbin/kestrel-playlist.pls\"><b>"},
      {"hyphens and first letters", "k------k"},
  };
  for (const auto& [what, piece] : pages) {
    std::printf("%s, ns a byte at 4, 16, 64 MiB:", what);
    for (std::size_t size = std::size_t{4} << 20; size <= kPage; size *= 4) {
      std::string page;
      page.reserve(size + 64);
      while (page.size() < size) page += piece;
      const double ms = fastest([&] { (void)directory::scanPage(page); }, 3);
      std::printf(" %.2f", ms * 1e6 / double(size));
    }
    std::printf("\n");
  }
}

// Loading 20 caches of so many stations, in ms.
double cacheBench(int stations) {
  char folder[] = "/tmp/kestrel-bench-XXXXXX";
  if (::mkdtemp(folder) == nullptr) std::exit(2);
  const app::Paths paths{folder, folder};
  const app::Settings settings;
  const app::Messages messages;
  tray::MenuTree tree;
  app::makeFolder(paths.inData("\\data"));
  std::string records;
  for (int i = 0; i < stations; ++i) {
    records += "A station with a title of usual length, number " + std::to_string(i) +
               "%#$http://directory.example/sbin/kestrel-playlist.pls?rn=" + std::to_string(i) +
               "&file=filename.pls\r\n";
  }
  std::vector<std::string> files;
  for (const auto& genre : tree.mgenre) {
    files.push_back(paths.inData("\\data\\" + genre.Tag + ".dat"));
    if (!app::replaceFile(files.back(), records)) std::exit(2);
  }
  directory::StationLists lists(paths, settings, messages, tree, "20250615");
  const double load_ms = fastest([&] { lists.loadAtStart(); });
  const double read_ms = fastest([&] {
    for (const auto& file : files) (void)app::readWhole(file);
  });
  std::printf("20 caches of %d stations: %.2f ms, of which reading the files %.2f ms\n", stations,
              load_ms, read_ms);
  for (const auto& file : files) app::removeFile(file);
  ::rmdir((std::string(folder) + "/data").c_str());
  ::rmdir(folder);
  return load_ms;
}

}  // namespace

int main() {
  const double ratio = pageBench();
  hostileBench();
  const double few_ms = cacheBench(100);
  std::printf("ten times as many stations: %.1f x the time\n", cacheBench(1000) / few_ms);
  return ratio < 0.5 ? 1 : 0;
}
