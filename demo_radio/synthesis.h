#pragma once

#include <vector>

namespace demo_radio {

/// One loop of a mood in a tone, as interleaved samples between -1 and 1. The
/// end joins the beginning without a click. The tone's frequency is louder than
/// everything else in it.
std::vector<float> synthesise(int mood, int tone, int sample_rate, int channels);

}  // namespace demo_radio
