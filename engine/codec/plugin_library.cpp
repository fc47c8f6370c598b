#include "engine/codec/codecs.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace engine {
namespace {

#if defined(_WIN32)

std::wstring wide(const std::string& text) {
  const int size = static_cast<int>(text.size());
  std::wstring result(text.size(), L'\0');
  result.resize(
      static_cast<size_t>(MultiByteToWideChar(CP_ACP, 0, text.data(), size, result.data(), size)));
  return result;
}

// With its trailing backslash.
std::wstring ownFolder() {
  HMODULE self = nullptr;
  GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      reinterpret_cast<LPCWSTR>(reinterpret_cast<uintptr_t>(&ownFolder)), &self);
  std::wstring path(32768, L'\0');
  path.resize(GetModuleFileNameW(self, path.data(), static_cast<DWORD>(path.size())));
  return path.substr(0, path.rfind(L'\\') + 1);
}

void* openLibrary(const std::string& file) {
  const bool bare = file.find_first_of("\\/:") == std::string::npos;
  return LoadLibraryW(((bare ? ownFolder() : std::wstring()) + wide(file)).c_str());
}

void* findSymbol(void* library, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

void closeLibrary(void* library) {
  FreeLibrary(static_cast<HMODULE>(library));
}

#else

std::string ownFolder() {
  Dl_info info = {};
  if (dladdr(reinterpret_cast<void*>(&ownFolder), &info) == 0) return {};
  const std::string path = info.dli_fname;
  return path.substr(0, path.rfind('/') + 1);
}

void* openLibrary(const std::string& file) {
  const bool bare = file.find('/') == std::string::npos;
  return dlopen(((bare ? ownFolder() : std::string()) + file).c_str(), RTLD_NOW | RTLD_LOCAL);
}

void* findSymbol(void* library, const char* name) {
  return dlsym(library, name);
}

void closeLibrary(void* library) {
  dlclose(library);
}

#endif

}  // namespace

std::shared_ptr<PluginLibrary> PluginLibrary::load(const std::string& file, Failure& failed) {
  failed = Failure::no_file;
  void* library = openLibrary(file);
  if (library == nullptr) return nullptr;
  std::shared_ptr<PluginLibrary> loaded(new PluginLibrary(library));
  failed = Failure::no_plugin;
  const auto entry =
      reinterpret_cast<kestrel_plugin_entry*>(findSymbol(library, KESTREL_PLUGIN_ENTRY));
  if (entry == nullptr || (loaded->plugin_ = entry()) == nullptr) return nullptr;
  failed = Failure::other_version;
  if (loaded->plugin_->version != KESTREL_PLUGIN_VERSION) return nullptr;
  failed = Failure::none;
  return loaded;
}

PluginLibrary::~PluginLibrary() {
  closeLibrary(library_);
}

}  // namespace engine
