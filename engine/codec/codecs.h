#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/mutex.h"
#include "engine/abi/plugin.h"

namespace engine {

/// A loaded plug-in, in memory while this lives.
class PluginLibrary {
 public:
  /// A name without a folder is looked for beside the engine itself. Null: `failed`
  /// says whether it could not be loaded, is no plug-in, or one of another version.
  enum class Failure { none, no_file, no_plugin, other_version };
  static std::shared_ptr<PluginLibrary> load(const std::string& file, Failure& failed);

  ~PluginLibrary();
  PluginLibrary(const PluginLibrary&) = delete;
  PluginLibrary& operator=(const PluginLibrary&) = delete;

  const kestrel_plugin& plugin() const { return *plugin_; }

 private:
  explicit PluginLibrary(void* library) : library_(library) {}

  void* library_;
  const kestrel_plugin* plugin_ = nullptr;
};

/// A codec, and what keeps its code in memory.
struct Codec {
  const kestrel_codec* functions = nullptr;
  std::shared_ptr<PluginLibrary> library;  ///< null for a built-in one
};

/// The codecs to be had: the built-in ones and those of the plug-ins. Any thread.
class Codecs {
 public:
  /// A handle, or 0 and the reason.
  uint32_t load(const std::string& file, PluginLibrary::Failure& failed);
  /// 0: all. False without such a handle.
  bool free(uint32_t handle);
  std::vector<Codec> all();

 private:
  struct Loaded {
    uint32_t handle;
    std::shared_ptr<PluginLibrary> library;
  };
  base::Mutex mutex_;
  uint32_t last_handle_ GUARDED_BY(mutex_) = 0;
  std::vector<Loaded> loaded_ GUARDED_BY(mutex_);
};

}  // namespace engine
