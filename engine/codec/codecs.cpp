#include "engine/codec/codecs.h"

#include <algorithm>

#include "engine/codec/container_audio.h"
#include "engine/codec/mpeg_audio.h"

namespace engine {

uint32_t Codecs::load(const std::string& file, PluginLibrary::Failure& failed) {
  auto library = PluginLibrary::load(file, failed);
  if (!library) return 0;
  const base::Lock lock(mutex_);
  loaded_.push_back({++last_handle_, std::move(library)});
  return last_handle_;
}

bool Codecs::free(uint32_t handle) {
  const base::Lock lock(mutex_);
  const size_t gone = std::erase_if(
      loaded_, [&](const Loaded& each) { return handle == 0 || each.handle == handle; });
  return handle == 0 || gone != 0;
}

std::vector<Codec> Codecs::all() {
  // Containers first: they begin with a sign of their own, bare frames anywhere.
  std::vector<Codec> codecs{{&kOggAudio, nullptr}, {&kFlacAudio, nullptr}, {&kMpegAudio, nullptr}};
  const base::Lock lock(mutex_);
  for (const Loaded& each : loaded_) {
    const kestrel_plugin& plugin = each.library->plugin();
    for (uint32_t i = 0; i < plugin.count; ++i) codecs.push_back({&plugin.codecs[i], each.library});
  }
  return codecs;
}

}  // namespace engine
