// Whatever settings file is read, the file written from it is whole, and reading
// that one changes nothing.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "app/settings.h"

namespace {

std::string rewritten(std::string_view text) {
  app::Settings settings;
  menu::MenuTree tree;
  app::readEarlySettings(text, settings);
  app::applySettings(text, settings, tree);
  return app::settingsText(settings, tree);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string written = rewritten({reinterpret_cast<const char*>(data), size});
  if (std::count(written.begin(), written.end(), '\n') != 19) std::abort();
  if (rewritten(written) != written) std::abort();
  return 0;
}
