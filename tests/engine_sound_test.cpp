// What becomes of the sound on its way to the device.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <future>
#include <numbers>
#include <thread>
#include <utility>

#include "engine/engine.h"
#include "engine/gain.h"
#include "engine/resampler.h"
#include "tests/engine_harness.h"

namespace engine_test {
namespace {

using namespace std::chrono_literals;
using engine::Gain;

DemoRadio& radio() {
  static DemoRadio running;
  return running;
}

/// From one sample to the next, with silence before and behind.
float largestStep(const std::vector<float>& sound) {
  float largest = 0;
  float before = 0;
  for (float sample : sound) {
    largest = std::max(largest, std::abs(sample - std::exchange(before, sample)));
  }
  return std::max(largest, std::abs(before));
}

TEST(GainTest, ReachesEachVolumeByRampsAndLeavesFullVolumeAlone) {
  constexpr unsigned kRate = 48000;
  constexpr size_t kFrames = 4800;
  Gain gain;
  float before = 0;
  for (const float target : {1.0f, 0.3f, 0.31f, 0.0f, 1.0f}) {
    std::vector<float> sound(kFrames * 2, 1.0f);
    // In uneven pieces, as sound comes.
    for (size_t at = 0; at < sound.size(); at += 1154) {
      gain.apply(std::span(sound).subspan(at, std::min<size_t>(1154, sound.size() - at)), target,
                 kRate);
    }
    EXPECT_EQ(sound.back(), target);
    for (size_t i = 0; i < sound.size(); i += 2) {
      ASSERT_LE(std::abs(sound[i] - before), 1.001f / (kRate * 15 / 1000)) << target << " at " << i;
      ASSERT_EQ(sound[i], sound[i + 1]);
      before = sound[i];
    }
  }
  std::vector<float> sound = {0.1f, -0.7f};
  gain.apply(sound, 1, kRate);
  EXPECT_EQ(sound, (std::vector<float>{0.1f, -0.7f}));
}

TEST(ResamplerTest, KeepsNoiseNinetyDecibelsBelowASine) {
  for (const int from : {44100, 32000, 22050, 48000}) {
    engine::Resampler resampler(48000);
    std::vector<float> out;
    std::vector<float> piece(1152 * 2);
    size_t frame = 0;
    while (out.size() < 2 * 48000 * 2) {
      for (size_t i = 0; i < piece.size(); i += 2, ++frame) {
        piece[i] = piece[i + 1] = static_cast<float>(
            0.5 * std::sin(2 * std::numbers::pi * 997 * static_cast<double>(frame) / from));
      }
      const auto made = resampler.convert({piece.data(), 1152, 2, from, 0});
      out.insert(out.end(), made.begin(), made.end());
    }
    // What a sine of that frequency explains is the signal, the rest is noise.
    constexpr size_t kFirst = 4800;
    constexpr size_t kCount = 48000;
    double sine = 0, cosine = 0, all = 0;
    for (size_t i = 0; i < kCount; ++i) {
      const double sample = out[(kFirst + i) * 2];
      const double phase = 2 * std::numbers::pi * 997 * static_cast<double>(i) / 48000;
      sine += sample * std::sin(phase);
      cosine += sample * std::cos(phase);
      all += sample * sample;
    }
    const double signal = (sine * sine + cosine * cosine) * 2 / kCount;
    EXPECT_GE(10 * std::log10(signal / (all - signal)), 90) << from;
  }
}

/// Sound made by another program, as an MP3 file and as that program decodes it.
class MadeSound {
 public:
  explicit MadeSound(const std::string& source) {
    const std::string mp3 = folder_.path() + "/sound.mp3";
    const std::string raw = folder_.path() + "/sound.raw";
    const std::string quiet = "ffmpeg -nostdin -v error ";
    EXPECT_EQ(0, std::system((quiet + "-f lavfi -i " + source +
                              " -ar 48000 -ac 2 -b:a 192k -write_xing 0 -id3v2_version 0 " + mp3)
                                 .c_str()));
    EXPECT_EQ(0,
              std::system((quiet + "-flags2 +skip_manual -i " + mp3 + " -f f32le " + raw).c_str()));
    file = contents(mp3);
    const std::string samples = contents(raw);
    decoded.resize(samples.size() / sizeof(float));
    std::memcpy(decoded.data(), samples.data(), decoded.size() * sizeof(float));
  }

  std::string file;
  std::vector<float> decoded;  ///< interleaved stereo

 private:
  static std::string contents(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  Folder folder_;
};

std::string headOf(const std::string& file) {
  return "HTTP/1.0 200 OK\r\nContent-Type: audio/mpeg\r\nContent-Length: " +
         std::to_string(file.size()) + "\r\n\r\n";
}

TEST(Sound, IsWhatTheDecoderMadeToTheBit) {
  const MadeSound made("anoisesrc=amplitude=0.4:duration=2:seed=1");
  Listener listener;
  Session session;
  ScriptedServer server;
  auto opening = std::async(std::launch::async, [&] { return listener.play(server.url()); });
  server.accept();
  server.send(headOf(made.file) + made.file);
  server.close();
  ASSERT_NE(0u, opening.get());
  constexpr size_t kRamp = Tape::kRate * Gain::kRampMilliseconds / 1000 + 1;
  const auto sound = session.listen(1.8);
  std::vector<float> left;
  for (size_t i = 0; i < made.decoded.size(); i += 2) left.push_back(made.decoded[i]);
  ASSERT_GE(left.size(), sound.size());
  size_t different = 0;
  for (size_t i = kRamp; i + kRamp < sound.size(); ++i) different += sound[i] != left[i];
  EXPECT_EQ(0u, different) << "of " << sound.size();
}

TEST(Sound, StartsChangesPausesAndStopsWithoutAClick) {
  const MadeSound made("sine=frequency=220:duration=6");
  Listener listener;
  Session session;
  ScriptedServer server;
  auto opening = std::async(std::launch::async, [&] { return listener.play(server.url()); });
  server.accept();
  // The rest comes when this has long been played.
  server.send(headOf(made.file) + made.file.substr(0, made.file.size() / 2));
  const HSTREAM stream = opening.get();
  ASSERT_NE(0u, stream);
  session.listen(0.5);
  BASS_ChannelSetAttributes(stream, -1, 0, -101);
  session.listen(0.5);
  BASS_ChannelSetAttributes(stream, -1, 10000, -101);
  session.listen(1.8);
  std::this_thread::sleep_for(1s);
  server.send(made.file.substr(made.file.size() / 2));
  session.listen(1.5);
  EXPECT_TRUE(BASS_ChannelStop(stream));
  EXPECT_TRUE(BASS_Free());  // waits for the fade
  EXPECT_TRUE(BASS_Init(-1, 44100, 0, nullptr, nullptr));
  float usual = 0;
  for (size_t i = 2; i < made.decoded.size(); i += 2) {
    usual = std::max(usual, std::abs(made.decoded[i] - made.decoded[i - 2]));
  }
  const std::lock_guard lock(session.reel()->mutex);
  EXPECT_LE(largestStep(session.reel()->left), 1.2f * usual);
}

/// Has no device, then one that fails after a while, then another.
class Fickle final : public engine::OutputFactory {
 public:
  struct State {
    std::atomic<bool> there{false};
    std::atomic<int> opened{0};
  };
  Fickle(std::shared_ptr<State> state, std::unique_ptr<Tape> tape)
      : state_(std::move(state)), tape_(std::move(tape)) {}
  std::unique_ptr<engine::Output> open(const engine::Interrupt& interrupt) override {
    if (!state_->there) return nullptr;
    ++state_->opened;
    return std::make_unique<Device>(state_, tape_->open(interrupt));
  }

 private:
  class Device final : public engine::Output {
   public:
    Device(std::shared_ptr<State> state, std::unique_ptr<Output> output)
        : state_(std::move(state)), output_(std::move(output)) {}
    unsigned rate() const override { return output_->rate(); }
    bool write(std::span<const float>& samples) override {
      return state_->there && output_->write(samples);
    }
    void flush() override { output_->flush(); }
    unsigned pendingMilliseconds() override { return output_->pendingMilliseconds(); }
    void finish(std::span<const float> last) override { output_->finish(last); }

   private:
    std::shared_ptr<State> state_;
    std::unique_ptr<Output> output_;
  };
  std::shared_ptr<State> state_;
  std::unique_ptr<Tape> tape_;
};

TEST(Sound, ComesWithADeviceAndGoesOnWithTheNext) {
  auto state = std::make_shared<Fickle::State>();
  auto tape = std::make_unique<Tape>();
  const auto reel = tape->reel();
  Listener listener;
  Session session;
  engine::instance().useOutput(std::make_unique<Fickle>(state, std::move(tape)));
  const Station station = radio().station("mp3", 44100);
  ASSERT_NE(0u, listener.play(radio().stream(station, "no-burst")));
  const auto wait_for_sound = [&](size_t samples) {
    for (int i = 0; i < 2000; ++i) {
      {
        const std::lock_guard lock(reel->mutex);
        if (reel->left.size() >= samples) return true;
      }
      std::this_thread::sleep_for(10ms);
    }
    return false;
  };
  // The station runs on meanwhile, or there would be nothing to record.
  const size_t second = station.kbit * 125;
  for (int i = 0; i < 2000 && listener.bytes().size() < 2 * second; ++i) {
    std::this_thread::sleep_for(10ms);
  }
  EXPECT_GE(listener.bytes().size(), 2 * second);
  state->there = true;
  EXPECT_TRUE(wait_for_sound(Tape::kRate));
  state->there = false;
  std::this_thread::sleep_for(1500ms);
  state->there = true;
  EXPECT_TRUE(wait_for_sound(3 * Tape::kRate));
  EXPECT_EQ(2, state->opened);
  const std::lock_guard lock(reel->mutex);
  const std::vector<float> last(reel->left.end() - Tape::kRate / 2, reel->left.end());
  EXPECT_GT(toneShare(last, station.tone), 4 * toneShare(last, station.tone * 1.06));
}

}  // namespace
}  // namespace engine_test
