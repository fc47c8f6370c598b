#pragma once

#include <array>
#include <cmath>
#include <string>

/// The sounds that exist: every mood in every tone. Shared by the program that
/// makes them and the server that sends them.
namespace demo_radio {

enum class Codec { mp3, aac };

struct Format {
  Codec codec;
  int kbit;         ///< kbit/s, as announced to listeners
  int sample_rate;  ///< Hz
  int channels;
};

/// One loop in samples at 44.1 kHz: a whole number of MP3 frames (1152 samples)
/// and of AAC frames (1024 samples), so that loops join at frame boundaries.
inline constexpr int kLoopSamples = 9216 * 32;
inline constexpr double kLoopSeconds = kLoopSamples / 44100.0;

inline constexpr int kTones = 25;
inline constexpr std::array<const char*, 5> kMoods = {"pad", "pluck", "bells", "organ", "pulse"};
inline constexpr int kMoodCount = static_cast<int>(kMoods.size());

/// The loudest frequency of a tone's sounds in Hz, semitones from 220 to 880 Hz,
/// rounded so that a loop holds whole periods.
inline double toneHz(int tone) {
  return std::round(220.0 * std::exp2(tone / 12.0) * kLoopSeconds) / kLoopSeconds;
}

/// Each tone comes in one format, in every mood.
inline Format toneFormat(int tone) {
  static constexpr Format kMp3_128{Codec::mp3, 128, 44100, 2}, kMp3_96{Codec::mp3, 96, 44100, 2},
      kMp3_64{Codec::mp3, 64, 44100, 1}, kMp3_56{Codec::mp3, 56, 44100, 1},
      kMp3_32{Codec::mp3, 32, 22050, 1}, kMp3_24{Codec::mp3, 24, 22050, 1},
      kAac64{Codec::aac, 64, 44100, 2}, kAac96{Codec::aac, 96, 44100, 2};
  static constexpr std::array<Format, kTones> kFormats = {
      kMp3_128, kMp3_128, kAac64,   kMp3_96,  kMp3_128, kAac96,   kMp3_64, kMp3_128, kMp3_24,
      kMp3_128, kAac64,   kMp3_128, kMp3_96,  kAac96,   kMp3_128, kMp3_56, kMp3_64,  kMp3_128,
      kAac64,   kMp3_96,  kMp3_32,  kMp3_128, kAac96,   kMp3_24,  kMp3_128};
  return kFormats.at(static_cast<std::size_t>(tone));
}

/// For example "bells-07.mp3".
inline std::string soundFile(int mood, int tone) {
  const std::string number = (tone < 10 ? "0" : "") + std::to_string(tone);
  const char* extension = toneFormat(tone).codec == Codec::mp3 ? ".mp3" : ".aac";
  return std::string(kMoods.at(static_cast<std::size_t>(mood))) + "-" + number + extension;
}

}  // namespace demo_radio
