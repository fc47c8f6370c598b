// How fast a directory page is scanned, beside one pass of memmem over the same bytes,
// and how long the lists of a start take. Of one run the ratios count: the scan is to
// have at least half of memmem's speed, and the same for pages of any size and kind.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>

#include "base/files.h"
#include "directory/marker_search.h"
#include "directory/page.h"
#include "directory/station_lists.h"
#include "tests/support/temporary_folder.h"

namespace {

/// So many bytes of a page as the directory writes it, a station every 3 kB.
std::string usualPage(std::size_t size) {
  constexpr std::size_t kEach = 3355;
  const std::string filler =
      "<td nowrap align=\"center\"><font size=\"2\" face=\"Arial\">Now playing: a "
      "track</font></td>\n";
  std::string page;
  for (std::size_t i = 0; page.size() < size; ++i) {
    const std::string number = std::to_string(i);
    page += "<a href=\"/sbin/kestrel-playlist.pls?rn=" + number +
            "&file=filename.pls\"><img src=\"t.gif\"></a><a href=\"http://station" + number +
            ".example/\">Station number " + number + "</a>\n";
    while (page.size() < kEach * (i + 1)) page += filler;
  }
  return page;
}

std::string repeated(const std::string& piece, std::size_t size) {
  std::string page;
  while (page.size() < size) page += piece;
  return page;
}

void scan(benchmark::State& state, const std::string& page) {
  for (auto _ : state) benchmark::DoNotOptimize(directory::scanPage(page));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * page.size()));
}

void usual(benchmark::State& state) {
  scan(state, usualPage(static_cast<std::size_t>(state.range(0))));
}

/// Pages in which plain searching for what is not there would be quadratic.
void hostile(benchmark::State& state, const char* piece) {
  scan(state, repeated(piece, static_cast<std::size_t>(state.range(0))));
}

void memmemOnly(benchmark::State& state) {
  const std::string page = usualPage(static_cast<std::size_t>(state.range(0)));
  const auto marker = directory::kMarker;
  for (auto _ : state) {
    const char* const end = page.data() + page.size();
    for (const char* at = page.data(); at != nullptr;) {
      const void* found =
          ::memmem(at, static_cast<std::size_t>(end - at), marker.data(), marker.size());
      at = found == nullptr ? nullptr : static_cast<const char*>(found) + marker.size();
      benchmark::DoNotOptimize(at);
    }
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * page.size()));
}

/// Loading the lists of all genres, of so many stations each.
void lists(benchmark::State& state) {
  const TestFolder folder;
  const app::Paths paths{folder.path(), folder.path()};
  const app::Settings settings;
  const app::Messages messages;
  menu::MenuTree tree;
  base::makeFolder(paths.inData("\\data"));
  const std::string records = repeated(
      "A station with a title of usual length, number 1000%#$http://directory.example/sbin/"
      "kestrel-playlist.pls?rn=1000&file=filename.pls\r\n",
      115 * static_cast<std::size_t>(state.range(0)));
  for (const auto& genre : tree.mgenre) {
    if (!base::replaceFile(paths.inData("\\data\\" + genre.Tag + ".dat"), records)) {
      return state.SkipWithError("no list can be written");
    }
  }
  directory::StationLists all(paths, settings, messages, tree, "20250615");
  for (auto _ : state) all.loadAtStart();
}

constexpr std::int64_t kSmall = 4 << 20, kLarge = 64 << 20;

BENCHMARK(memmemOnly)->Arg(kLarge);
BENCHMARK(usual)->RangeMultiplier(4)->Range(kSmall, kLarge);
BENCHMARK_CAPTURE(hostile, markers, "kestrel-playlist.pls")->Range(kSmall, kLarge);
BENCHMARK_CAPTURE(hostile, no_anchors, "/sbin/kestrel-playlist.pls\"><b>")->Range(kSmall, kLarge);
BENCHMARK_CAPTURE(hostile, first_letters, "k------k")->Range(kSmall, kLarge);
BENCHMARK(lists)->Arg(100)->Arg(1000);

}  // namespace

BENCHMARK_MAIN();
