#include "tests/player/fakes.h"

#include <algorithm>

#include "tests/support/eventually.h"

namespace {

FakeLibrary* fake = nullptr;

BASS_DWORD next(std::vector<BASS_DWORD>& answers) {
  const BASS_DWORD answer = answers.empty() ? 0 : answers.front();
  if (answers.size() > 1) answers.erase(answers.begin());
  return answer;
}

std::string list(std::initializer_list<long long> values) {
  std::string text;
  for (const long long value : values) text += (text.empty() ? "" : ",") + std::to_string(value);
  return text;
}

BASS_DWORD BASS_API getVersion() {
  fake->note("GetVersion");
  return fake->version;
}
BASS_BOOL BASS_API init(int device, BASS_DWORD freq, BASS_DWORD flags, void*, const void* clsid) {
  fake->note("Init " + list({device, freq, flags}) + (clsid == nullptr ? "" : " clsid"));
  return fake->init_works;
}
BASS_BOOL BASS_API freeAll() {
  fake->note("Free");
  fake->open_hangs = false;
  return 1;
}
BASS_DWORD BASS_API setConfig(BASS_DWORD option, BASS_DWORD value) {
  fake->note("SetConfig " + list({option, value}));
  return 0;
}
int BASS_API errorGetCode() {
  return BASS_ERROR_DEVICE;
}
HPLUGIN BASS_API pluginLoad(const char* file, BASS_DWORD flags) {
  fake->note("PluginLoad " + std::string(file) + " " + list({flags}));
  return 1;
}
BASS_BOOL BASS_API pluginFree(HPLUGIN plugin) {
  fake->note("PluginFree " + list({plugin}));
  return 1;
}
HSTREAM BASS_API streamCreateURL(const char* url, BASS_DWORD offset, BASS_DWORD flags,
                                 DOWNLOADPROC* proc, uintptr_t user) {
  fake->download = proc;
  fake->note("StreamCreateURL " + std::string(url) + " " +
             list({offset, flags, static_cast<long long>(user)}));
  while (fake->open_hangs) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  return fake->stream;
}
BASS_BOOL BASS_API streamFree(HSTREAM handle) {
  fake->note("StreamFree " + list({handle}));
  return 1;
}
BASS_DWORD BASS_API filePosition(HSTREAM, BASS_DWORD mode) {
  if (mode == BASS_FILEPOS_END) return next(fake->ends);
  return next(mode == BASS_FILEPOS_DOWNLOAD ? fake->downloads : fake->decodes);
}
const char* BASS_API getTags(BASS_DWORD, BASS_DWORD tags) {
  const std::string& text = tags == BASS_TAG_ICY ? fake->icy_headers : fake->meta;
  return text.empty() ? nullptr : text.c_str();
}
HSYNC BASS_API setSync(BASS_DWORD handle, BASS_DWORD type, BASS_QWORD param, SYNCPROC* proc,
                       uintptr_t user) {
  fake->sync = proc;
  fake->note("ChannelSetSync " +
             list({handle, type, static_cast<long long>(param), static_cast<long long>(user)}));
  return 1;
}
BASS_BOOL BASS_API getInfo(BASS_DWORD, BASS_CHANNELINFO* info) {
  info->ctype = fake->ctype;
  return 1;
}
BASS_BOOL BASS_API setAttributes(BASS_DWORD handle, int freq, int volume, int pan) {
  fake->note("ChannelSetAttributes " + list({handle, freq, volume, pan}));
  return 1;
}
BASS_BOOL BASS_API play(BASS_DWORD handle, BASS_BOOL restart) {
  fake->note("ChannelPlay " + list({handle, restart}));
  return 1;
}
BASS_BOOL BASS_API stop(BASS_DWORD handle) {
  fake->note("ChannelStop " + list({handle}));
  fake->open_hangs = false;
  return 1;
}

}  // namespace

FakeLibrary::FakeLibrary() {
  fake = this;
}

FakeLibrary::~FakeLibrary() {
  fake = nullptr;
}

player::AudioLibrary FakeLibrary::table() const {
  return {getVersion,   init,          freeAll,    setConfig,
          errorGetCode, pluginLoad,    pluginFree, streamCreateURL,
          streamFree,   filePosition,  getTags,    setSync,
          getInfo,      setAttributes, play,       stop};
}

void FakeLibrary::note(std::string call) {
  const std::lock_guard lock(mutex_);
  calls_.push_back(std::move(call));
}

std::vector<std::string> FakeLibrary::calls() const {
  const std::lock_guard lock(mutex_);
  return calls_;
}

bool FakeLibrary::waitFor(const std::string& call) const {
  return eventually([&] {
    return std::ranges::any_of(calls(), [&](const auto& made) { return made.starts_with(call); });
  });
}

void FakeView::write(const std::string& label, std::string text) {
  const std::lock_guard lock(mutex_);
  texts_[label].push_back(std::move(text));
}

std::string FakeView::now(const std::string& label) const {
  const auto texts = history(label);
  return texts.empty() ? "(never)" : texts.back();
}

std::vector<std::string> FakeView::history(const std::string& label) const {
  const std::lock_guard lock(mutex_);
  const auto found = texts_.find(label);
  return found == texts_.end() ? std::vector<std::string>{} : found->second;
}

bool FakeView::waitFor(const std::string& label, const std::string& text) const {
  return eventually([&] { return now(label) == text; });
}
