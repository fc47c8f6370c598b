// The yardstick for playing: nothing but an output kept fed.
//   silence_player            plays silence until it is ended
//   silence_player --tone HZ  plays a tone and says so when it hands over the first of it
#include <windows.h>

#include <mmsystem.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

constexpr int kRate = 44100, kChannels = 2, kBuffers = 8;
constexpr std::size_t kFrames = kRate / 10;  // 100 ms

class Tone {
 public:
  explicit Tone(double hz) : step_(hz * 2 * 3.14159265358979 / kRate) {}

  void fill(std::vector<std::int16_t>& samples) {
    for (std::size_t frame = 0; frame < kFrames; ++frame, phase_ += step_)
      samples[frame * 2] = samples[frame * 2 + 1] =
          static_cast<std::int16_t>(step_ == 0 ? 0 : 8000 * std::sin(phase_));
  }

 private:
  double step_;
  double phase_ = 0;
};

int fail(const char* what) {
  std::fprintf(stderr, "silence_player: %s\n", what);
  return 1;
}

int play(Tone tone, bool announce) {
  const HANDLE done = CreateEventW(nullptr, FALSE, FALSE, nullptr);
  const WAVEFORMATEX format{WAVE_FORMAT_PCM, kChannels, kRate, kRate * kChannels * 2,
                            kChannels * 2,   16,        0};
  HWAVEOUT output = nullptr;
  if (waveOutOpen(&output, WAVE_MAPPER, &format, reinterpret_cast<DWORD_PTR>(done), 0,
                  CALLBACK_EVENT) != MMSYSERR_NOERROR)
    return fail("no output");
  std::array<std::vector<std::int16_t>, kBuffers> samples;
  std::array<WAVEHDR, kBuffers> headers{};
  for (std::size_t i = 0; i < kBuffers; ++i) {
    samples[i].resize(kFrames * kChannels);
    headers[i].lpData = reinterpret_cast<char*>(samples[i].data());
    headers[i].dwBufferLength = static_cast<DWORD>(samples[i].size() * sizeof(std::int16_t));
    waveOutPrepareHeader(output, &headers[i], sizeof(WAVEHDR));
    headers[i].dwFlags |= WHDR_DONE;
  }
  for (;;) {
    for (std::size_t i = 0; i < kBuffers; ++i) {
      if ((headers[i].dwFlags & WHDR_DONE) == 0) continue;
      tone.fill(samples[i]);
      if (announce) {
        std::puts("playing");
        std::fflush(stdout);
        announce = false;
      }
      if (waveOutWrite(output, &headers[i], sizeof(WAVEHDR)) != MMSYSERR_NOERROR)
        return fail("the output takes no more");
    }
    WaitForSingleObject(done, 1000);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const bool tone = argc == 3 && std::strcmp(argv[1], "--tone") == 0;
  return play(Tone(tone ? std::atof(argv[2]) : 0), tone);
}
