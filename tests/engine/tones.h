#pragma once

#include <vector>

/// What is in a sound of the tape's rate.
namespace engine_test {

/// Share of the samples' power that is at `frequency` (and a little around it).
double toneShare(const std::vector<float>& samples, double frequency);
double rootMeanSquare(const std::vector<float>& samples);
/// Whether there is sound with that tone, of a station's bells, in it.
bool hasTone(const std::vector<float>& samples, double frequency);
/// Those of the known tones that the sound has, in its order, each of at least that
/// many seconds.
std::vector<int> tonesIn(const std::vector<float>& sound, const std::vector<int>& known,
                         double least = 0.3);

}  // namespace engine_test
