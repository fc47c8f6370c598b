// What becomes of the sound on its way to the device.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <numbers>
#include <thread>
#include <utility>

#include "engine/sound/gain.h"
#include "engine/sound/resampler.h"
#include "tests/engine/harness.h"
#include "tests/engine/web.h"

namespace engine_test {
namespace {

using namespace std::chrono_literals;
using engine::Gain;

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
            0.5 * std::sin(2 * std::numbers::pi * 1010 * static_cast<double>(frame) / from));
      }
      const auto made = resampler.convert({piece.data(), 1152, 2, from, 0});
      out.insert(out.end(), made.begin(), made.end());
    }
    // What is not the sine is noise. Its first tenth of a second has the filter's start.
    std::vector<float> left;
    for (size_t i = 4800; i < 4800 + 48000; ++i) left.push_back(out[i * 2]);
    EXPECT_LE(10 * std::log10(1 - toneShare(left, 1010)), -90) << from;
  }
}

TEST(Sound, StartsChangesPausesAndStopsWithoutAClick) {
  const std::string file = encodedSine(220, 6);
  Listener listener;
  Session session;
  ScriptedServer server;
  // The rest comes when this has long been played.
  const HSTREAM stream = listener.play(
      server, "HTTP/1.0 200 OK\r\nContent-Type: audio/mpeg\r\nContent-Length: " +
                  std::to_string(file.size()) + "\r\n\r\n" + file.substr(0, file.size() / 2));
  ASSERT_NE(0u, stream);
  session.listen(0.5);
  BASS_ChannelSetAttributes(stream, -1, 0, -101);
  session.listen(0.5);
  BASS_ChannelSetAttributes(stream, -1, 10000, -101);
  session.listen(1.8);
  std::this_thread::sleep_for(1s);
  server.send(file.substr(file.size() / 2));
  session.listen(1.5);
  EXPECT_TRUE(BASS_ChannelStop(stream));
  EXPECT_TRUE(BASS_Free());  // waits for the fade
  EXPECT_TRUE(BASS_Init(-1, 44100, 0, nullptr, nullptr));
  const auto sound = session.reel()->sound();
  const std::vector<float> steady(sound.begin() + Tape::kRate / 4, sound.begin() + Tape::kRate / 2);
  const double step = rootMeanSquare(steady) * std::numbers::sqrt2 *
                      (2 * std::numbers::pi * 220 / Tape::kRate);  // of the sine itself
  EXPECT_LE(largestStep(sound), 1.2 * step);
}

TEST(Sound, ComesWithADeviceAndGoesOnWithTheNext) {
  Listener listener;
  Session session;
  Tape::Reel& reel = *session.reel();
  reel.has_device = false;
  const Station station = radio().station("mp3", 44100);
  ASSERT_NE(0u, listener.play(radio().stream(station, "no-burst")));
  // The station runs on meanwhile, or there would be nothing to record.
  const size_t second = station.kbit * 125;
  EXPECT_TRUE(eventually([&] { return listener.bytes().size() >= 2 * second; }));
  reel.has_device = true;
  session.listen(1);
  reel.has_device = false;
  std::this_thread::sleep_for(1500ms);
  reel.has_device = true;
  EXPECT_TRUE(hasTone(session.listen(2), station.tone));
  EXPECT_EQ(2, reel.opened);
}

}  // namespace
}  // namespace engine_test
