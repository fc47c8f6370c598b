// A station list file of any content fills a menu in which every station has a
// title and an address, and which survives being written and read again.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>

#include "directory/station_lists.h"

namespace {

// A file in memory that the loaders can open by its name.
class MemoryFile {
 public:
  std::string holding(std::string_view contents) const {
    if (::ftruncate(fd_, 0) != 0 || ::pwrite(fd_, contents.data(), contents.size(), 0) < 0) {
      std::abort();
    }
    return "/proc/self/fd/" + std::to_string(fd_);
  }

 private:
  const int fd_ = ::memfd_create("list", 0);
};

std::string written(const menu::MenuArray& menu, int first, int last) {
  std::string text;
  for (int i = first; i <= last; ++i) {
    if (menu[i].Caption.empty() || menu[i].Tag.empty()) std::abort();
    text += menu[i].Caption + "%#$" + menu[i].Tag + "\r\n";
  }
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const MemoryFile file;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const app::Paths paths{"/nowhere", "/nowhere"};
  app::Settings settings;
  settings.maxchar = size > 0 ? static_cast<std::int16_t>(data[0]) : std::int16_t{50};
  const app::Messages messages;
  menu::MenuTree tree;
  directory::StationLists lists(paths, settings, messages, tree, "20250615");

  lists.ladeoffline(tree.subgenre(0), file.holding(text), directory::StationLists::Kind::genre);
  const int last = tree.subgenre(0).UBound();
  if (size >= 2 && (tree.subgenre(0)[last].Tag != "reload" || last < 2)) std::abort();
  lists.ladespecial(tree.subspecial, file.holding(text));

  if (!lists.ladefavs(tree.subfavs, file.holding(text))) std::abort();
  const std::string first = written(tree.subfavs, 3, tree.subfavs.UBound());
  tree.subfavs.unloadAbove(2);
  if (!lists.ladefavs(tree.subfavs, file.holding(first))) std::abort();
  if (written(tree.subfavs, 3, tree.subfavs.UBound()) != first) std::abort();
  return 0;
}
