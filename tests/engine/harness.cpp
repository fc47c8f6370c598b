#include "tests/engine/harness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <future>
#include <utility>

#include "engine/engine.h"

namespace engine_test {
namespace {

using std::chrono::milliseconds;
using Time = std::chrono::steady_clock;

class TapeOutput final : public engine::Output {
 public:
  TapeOutput(std::shared_ptr<Tape::Reel> reel, const engine::Interrupt& interrupt)
      : reel_(std::move(reel)), interrupt_(interrupt) {}

  unsigned rate() const override { return Tape::kRate; }

  bool write(std::span<const float>& samples) override {
    if (!reel_->has_device) return false;
    while (pendingMilliseconds() > 300) {
      if (interrupt_.wait(milliseconds(20))) return true;
    }
    keep(std::exchange(samples, {}));
    return true;
  }
  void flush() override {}
  void finish(std::span<const float> last) override {
    keep(last);
    std::this_thread::sleep_for(std::min(milliseconds(pendingMilliseconds()), kLongestEnd));
  }
  unsigned pendingMilliseconds() override {
    const auto left = std::chrono::duration_cast<milliseconds>(until_ - Time::now()).count();
    return left > 0 ? static_cast<unsigned>(left) : 0;
  }

 private:
  void keep(std::span<const float> samples) {
    const size_t frames = samples.size() / kChannels;
    reel_->frames += frames;
    if (reel_->swallows) return;
    const auto now = Time::now();
    if (until_ != Time::time_point{} && until_ < now) ++reel_->gaps;
    until_ = std::max(until_, now) + std::chrono::microseconds(frames * 1'000'000 / Tape::kRate);
    const std::lock_guard lock(reel_->mutex);
    for (size_t i = 0; i < samples.size(); i += kChannels) reel_->left.push_back(samples[i]);
  }

  std::shared_ptr<Tape::Reel> reel_;
  const engine::Interrupt& interrupt_;
  Time::time_point until_{};  ///< when what has been written will have sounded
};

}  // namespace

std::vector<float> Tape::Reel::sound(size_t from) const {
  const std::lock_guard lock(mutex);
  return {left.begin() + static_cast<std::ptrdiff_t>(std::min(from, left.size())), left.end()};
}

std::unique_ptr<engine::Output> Tape::open(const engine::Interrupt& interrupt) {
  if (!reel_->has_device) return nullptr;
  ++reel_->opened;
  return std::make_unique<TapeOutput>(reel_, interrupt);
}

Session::Session() {
  auto tape = std::make_unique<Tape>();
  reel_ = tape->reel();
  engine::instance().useOutput(std::move(tape));
  EXPECT_TRUE(BASS_Init(-1, 44100, 0, nullptr, nullptr));
  BASS_SetConfig(BASS_CONFIG_MAXVOL, 10000);
  BASS_SetConfig(BASS_CONFIG_NET_PREBUF, 0);
  EXPECT_NE(0u, BASS_PluginLoad(AAC_PLUGIN, 0)) << BASS_ErrorGetCode();
}

Session::~Session() {
  EXPECT_TRUE(BASS_PluginFree(0));
  EXPECT_TRUE(BASS_Free());
}

std::vector<float> Session::listen(double seconds) {
  const auto wanted = heard_ + static_cast<size_t>(seconds * Tape::kRate);
  std::vector<float> sound;
  eventually([&] {
    sound = reel_->sound(heard_);
    return heard_ + sound.size() >= wanted;
  });
  heard_ += sound.size();
  return sound;
}

void Listener::download(const void* buffer, BASS_DWORD length, uintptr_t user) {
  auto& self = *reinterpret_cast<Listener*>(user);
  const std::lock_guard lock(self.mutex_);
  const size_t position = self.bytes_.size();
  if (length != 0) {
    self.bytes_.append(static_cast<const char*>(buffer), length);
  } else if (buffer != nullptr) {
    self.notes_.push_back({Note::status, static_cast<const char*>(buffer), position});
  } else {
    self.notes_.push_back({Note::end, {}, position});
  }
}

void Listener::titleSync(HSYNC, BASS_DWORD, uintptr_t data, uintptr_t user) {
  auto& self = *reinterpret_cast<Listener*>(user);
  const std::lock_guard lock(self.mutex_);
  self.notes_.push_back({Note::title, reinterpret_cast<const char*>(data), self.bytes_.size()});
}

HSTREAM Listener::create(const std::string& url) {
  return BASS_StreamCreateURL(url.c_str(), 0, BASS_STREAM_STATUS, &Listener::download,
                              reinterpret_cast<uintptr_t>(this));
}

void Listener::syncTitles(HSTREAM stream) {
  EXPECT_NE(0u, BASS_ChannelSetSync(stream, BASS_SYNC_META, 0, &Listener::titleSync,
                                    reinterpret_cast<uintptr_t>(this)));
}

HSTREAM Listener::play(ScriptedServer& server, const std::string& answer) {
  auto playing = std::async(std::launch::async, [&] { return play(server.url()); });
  server.answer(answer);
  return playing.get();
}

HSTREAM Listener::play(const std::string& url) {
  const HSTREAM stream = create(url);
  if (stream == 0) return 0;
  for (;;) {
    const BASS_DWORD total = BASS_StreamGetFilePosition(stream, BASS_FILEPOS_END);
    if (total == BASS_FILEPOS_ERROR) return 0;
    const BASS_DWORD downloaded = BASS_StreamGetFilePosition(stream, BASS_FILEPOS_DOWNLOAD);
    const BASS_DWORD current = BASS_StreamGetFilePosition(stream, BASS_FILEPOS_DECODE);
    if (std::lround((downloaded - current) * 100.0 / total) > 75) break;
    std::this_thread::sleep_for(milliseconds(50));
  }
  syncTitles(stream);
  EXPECT_TRUE(BASS_ChannelSetAttributes(stream, -1, 10000, -101));
  EXPECT_TRUE(BASS_ChannelPlay(stream, 0));
  return stream;
}

std::vector<Listener::Note> Listener::notes(Note::Kind kind) const {
  const std::lock_guard lock(mutex_);
  std::vector<Note> found;
  std::copy_if(notes_.begin(), notes_.end(), std::back_inserter(found),
               [&](const Note& note) { return note.kind == kind; });
  return found;
}

std::vector<std::string> Listener::texts(Note::Kind kind) const {
  std::vector<std::string> all;
  for (const Note& note : notes(kind)) all.push_back(note.text);
  return all;
}

size_t Listener::count(const std::string& status) const {
  const auto all = texts(Note::status);
  return static_cast<size_t>(std::count(all.begin(), all.end(), status));
}

std::string Listener::bytes() const {
  const std::lock_guard lock(mutex_);
  return bytes_;
}

bool Listener::waitFor(Note::Kind kind, size_t count) const {
  return eventually([&] { return notes(kind).size() >= count; });
}

bool Listener::hears(const std::string& bytes) const {
  eventually([&] { return this->bytes().size() >= bytes.size(); });
  return this->bytes() == bytes;
}

}  // namespace engine_test
