#include "demo_radio/synthesis.h"

#include <algorithm>
#include <array>
#include <complex>
#include <numbers>
#include <string_view>

#include "demo_radio/palette.h"

namespace demo_radio {
namespace {

constexpr char kRest = '.';
constexpr int kSteps = 16;

/// A drone on the station's tone, and a melody over it.
struct Mood {
  std::string_view melody;       ///< sixteen steps: semitones above the tone as '0' + n, or a rest
  std::array<float, 3> drone;    ///< level of the tone and its first overtones
  std::array<float, 3> strings;  ///< the same for the melody's notes
  double decay;                  ///< seconds until a note has faded to a third
  int swells;                    ///< how often the drone breathes in a loop
};

constexpr std::array<Mood, kMoodCount> kMoodTable = {{
    {"0...7...<...7...", {.30F, .03F, .01F}, {.10F, .02F, .00F}, 0.90, 2},
    {"047<@<747<47<047", {.26F, .02F, .00F}, {.13F, .05F, .02F}, 0.18, 4},
    {"<..7.>..@..<.C..", {.24F, .02F, .01F}, {.12F, .00F, .05F}, 0.70, 4},
    {"0.4.7.4.0.5.9.5.", {.28F, .08F, .05F}, {.08F, .05F, .04F}, 0.50, 1},
    {"0..0..7.0..0..5.", {.30F, .05F, .02F}, {.12F, .04F, .02F}, 0.12, 16},
}};

class Loop {
 public:
  Loop(int sample_rate, int channels)
      : rate_(sample_rate),
        channels_(channels),
        frames_(static_cast<std::size_t>(kLoopSamples) * static_cast<std::size_t>(sample_rate) /
                44100),
        samples_(frames_ * static_cast<std::size_t>(channels)) {}

  /// A steady tone of whole periods that swells and fades a little.
  void drone(double hz, float level, int swells) {
    std::complex<double> turn = step(hz), now = 1, breath = 1;
    const std::complex<double> breath_turn = step(swells / kLoopSeconds);
    for (std::size_t i = 0; i < frames_; ++i) {
      add(i, static_cast<float>(now.imag() * (0.8 + 0.2 * breath.real())) * level, 0.5F);
      now *= turn;
      breath *= breath_turn;
    }
  }

  /// A struck note; what rings beyond the end is heard at the beginning.
  void note(double start, double hz, float level, double decay, float pan) {
    const auto first = static_cast<std::size_t>(start * rate_);
    const auto length = static_cast<std::size_t>(decay * 7 * rate_);
    const std::complex<double> turn = step(hz) * std::exp(-1.0 / (decay * rate_));
    const double attack = 0.008 * rate_;
    std::complex<double> now = 1;
    for (std::size_t i = 0; i < length; ++i) {
      const double rise = std::min(1.0, static_cast<double>(i) / attack);
      add((first + i) % frames_, static_cast<float>(now.imag() * rise) * level, pan);
      now *= turn;
    }
  }

  std::vector<float> take() { return std::move(samples_); }

 private:
  [[nodiscard]] std::complex<double> step(double hz) const {
    return std::polar(1.0, 2 * std::numbers::pi * hz / rate_);
  }

  void add(std::size_t frame, float value, float pan) {
    if (channels_ == 1) {
      samples_[frame] += value;
    } else {
      samples_[frame * 2] += value * 2 * (1 - pan);
      samples_[frame * 2 + 1] += value * 2 * pan;
    }
  }

  double rate_;
  int channels_;
  std::size_t frames_;
  std::vector<float> samples_;
};

}  // namespace

std::vector<float> synthesise(int mood, int tone, int sample_rate, int channels) {
  const Mood& m = kMoodTable.at(static_cast<std::size_t>(mood));
  const double hz = toneHz(tone);
  Loop loop(sample_rate, channels);
  for (std::size_t k = 0; k < m.drone.size(); ++k)
    loop.drone(hz * static_cast<double>(k + 1), m.drone[k], m.swells);
  for (std::size_t i = 0; i < kSteps; ++i) {
    if (m.melody[i] == kRest) continue;
    const double note_hz = hz * std::exp2((m.melody[i] - '0') / 12.0);
    const float pan = i % 2 == 0 ? 0.35F : 0.65F;
    for (std::size_t k = 0; k < m.strings.size(); ++k)
      loop.note(static_cast<double>(i) * kLoopSeconds / kSteps,
                note_hz * static_cast<double>(k + 1), m.strings[k], m.decay, pan);
  }
  return loop.take();
}

}  // namespace demo_radio
