// Every address found in a playlist is a piece of one of its lines.
#include <cstdint>
#include <cstdlib>

#include "tray/playlist.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const char* last = text.data();
  for (const char* extension : {"pls", "m3u"}) {
    last = text.data();
    for (const std::string_view url : tray::playlistUrls(text, extension)) {
      if (url.data() < last || url.data() + url.size() > text.data() + size) std::abort();
      if (url.find_first_of("\r\n") != url.npos) std::abort();
      if (extension[0] == 'p' && url.find('=') != url.npos) std::abort();
      last = url.data() + url.size();
    }
  }
  return 0;
}
