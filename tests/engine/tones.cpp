#include "tests/engine/tones.h"

#include <cmath>
#include <numbers>

#include "tests/engine/harness.h"

namespace engine_test {

double rootMeanSquare(const std::vector<float>& samples) {
  double sum = 0;
  for (float sample : samples) sum += double{sample} * sample;
  return samples.empty() ? 0 : std::sqrt(sum / static_cast<double>(samples.size()));
}

double toneShare(const std::vector<float>& samples, double frequency) {
  // The sine and cosine of that frequency, correlated with the sound in short
  // pieces, so that a breath in between does not turn one against the other.
  constexpr size_t kPiece = 4800;
  double found = 0;
  double all = 0;
  for (size_t from = 0; from + kPiece <= samples.size(); from += kPiece) {
    double sine = 0;
    double cosine = 0;
    for (size_t i = from; i < from + kPiece; ++i) {
      const double phase = 2 * std::numbers::pi * frequency * static_cast<double>(i) / Tape::kRate;
      sine += samples[i] * std::sin(phase);
      cosine += samples[i] * std::cos(phase);
      all += double{samples[i]} * samples[i];
    }
    found += (sine * sine + cosine * cosine) * 2 / kPiece;
  }
  return all > 0 ? found / all : 0;
}

bool hasTone(const std::vector<float>& samples, double frequency) {
  constexpr double kSemitone = 1.06;
  return rootMeanSquare(samples) > 0.01 &&
         toneShare(samples, frequency) > 4 * toneShare(samples, frequency * kSemitone);
}

std::vector<int> tonesIn(const std::vector<float>& sound, const std::vector<int>& known,
                         double least) {
  constexpr size_t kPiece = Tape::kRate / 10;
  std::vector<int> tones;
  int last = 0;
  int pieces = 0;
  for (size_t from = 0; from + kPiece <= sound.size(); from += kPiece) {
    const auto begin = sound.begin() + static_cast<std::ptrdiff_t>(from);
    const std::vector<float> piece(begin, begin + kPiece);
    int found = 0;
    for (const int tone : known) {
      if (rootMeanSquare(piece) > 0.01 && toneShare(piece, tone) > 0.8) found = tone;
    }
    pieces = found == last ? pieces + 1 : 1;
    last = found;
    const bool long_enough = pieces >= static_cast<int>(least * 10);
    if (long_enough && found != 0 && (tones.empty() || tones.back() != found)) {
      tones.push_back(found);
    }
  }
  return tones;
}

}  // namespace engine_test
