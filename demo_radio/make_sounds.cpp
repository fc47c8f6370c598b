// Makes the demo radio's sounds:  make_sounds FOLDER
extern "C" {
#include <libavutil/log.h>
}

#include <atomic>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "demo_radio/encoder.h"
#include "demo_radio/palette.h"
#include "demo_radio/synthesis.h"

namespace {

void makeSound(const std::filesystem::path& folder, int mood, int tone) {
  const demo_radio::Format format = demo_radio::toneFormat(tone);
  const std::string loop = demo_radio::encodeLoop(
      demo_radio::synthesise(mood, tone, format.sample_rate, format.channels), format);
  std::ofstream file(folder / demo_radio::soundFile(mood, tone), std::ios::binary);
  file.write(loop.data(), static_cast<std::streamsize>(loop.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + folder.string());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: make_sounds FOLDER\n", stderr);
    return 2;
  }
  const std::filesystem::path folder = argv[1];
  std::filesystem::create_directories(folder);
  av_log_set_level(AV_LOG_ERROR);
  std::atomic<int> next = 0;
  std::atomic<bool> failed = false;
  const auto work = [&] {
    for (int job = next++; job < demo_radio::kMoodCount * demo_radio::kTones; job = next++) {
      try {
        makeSound(folder, job / demo_radio::kTones, job % demo_radio::kTones);
      } catch (const std::exception& error) {
        std::fprintf(stderr, "make_sounds: %s\n", error.what());
        failed = true;
        return;
      }
    }
  };
  std::vector<std::jthread> workers;
  for (unsigned i = 0; i < std::max(1U, std::thread::hardware_concurrency()); ++i)
    workers.emplace_back(work);
  workers.clear();
  return failed ? 1 : 0;
}
