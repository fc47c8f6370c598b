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

#include "service/encoder.h"
#include "service/palette.h"
#include "service/synthesis.h"

namespace {

void makeSound(const std::filesystem::path& folder, int mood, int tone) {
  const service::Format format = service::toneFormat(tone);
  const std::string loop = service::encodeLoop(
      service::synthesise(mood, tone, format.sample_rate, format.channels), format);
  std::ofstream file(folder / service::soundFile(mood, tone), std::ios::binary);
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
    for (int job = next++; job < service::kMoodCount * service::kTones; job = next++) {
      try {
        makeSound(folder, job / service::kTones, job % service::kTones);
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
