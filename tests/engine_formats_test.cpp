// Everything but plain MP3 and AAC: containers, chains, and streams that change.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "tests/engine_harness.h"
#include "tests/engine_web.h"

namespace engine_test {
namespace {

using Note = Listener::Note;

/// Type, rate and channels.
using Info = std::array<BASS_DWORD, 3>;
Info infoOf(HSTREAM stream) {
  BASS_CHANNELINFO info = {};
  EXPECT_TRUE(BASS_ChannelGetInfo(stream, &info));
  return {info.ctype, info.freq, info.chans};
}

struct Format {
  const char* name;
  const char* words;  ///< the encoder's
  const char* file;
  BASS_DWORD type;
  BASS_DWORD rate;
};

class Plays : public testing::TestWithParam<Format> {};

TEST_P(Plays, TheSoundWithItsTitle) {
  WebServer web;
  const std::string tags = " -metadata artist=Band -metadata 'title=Song; live'";
  // No type, no ending: only what is inside tells.
  web.put("/live", encodedSine(440, 3, GetParam().words + tags, GetParam().file));
  Listener listener;
  Session session;
  const HSTREAM stream = listener.play(web.url("/live"));
  ASSERT_NE(0u, stream) << BASS_ErrorGetCode();
  session.listen(0.3);
  EXPECT_GT(toneShare(session.listen(1.5), 440), 0.95);
  const Info info = infoOf(stream);
  EXPECT_EQ(GetParam().type, info[0]);
  EXPECT_EQ(GetParam().rate, info[1]);
  ASSERT_TRUE(listener.waitFor(Note::title, 1));
  EXPECT_EQ("StreamTitle='Band - Song\xcd\xbe live';", listener.notes(Note::title)[0].text);
  EXPECT_STREQ("StreamTitle='Band - Song\xcd\xbe live';",
               BASS_ChannelGetTags(stream, BASS_TAG_META));
}

INSTANTIATE_TEST_SUITE_P(
    Format, Plays,
    testing::Values(
        Format{"Vorbis", "-c:a libvorbis -ar 44100", "x.ogg", BASS_CTYPE_STREAM_OGG, 44100},
        Format{"Opus", "-c:a libopus -b:a 64k", "x.opus", BASS_CTYPE_STREAM_OGG, 48000},
        Format{"OggFlac", "-c:a flac -ar 44100", "x.oga", BASS_CTYPE_STREAM_FLAC, 44100},
        Format{"Flac", "-c:a flac -ac 2", "x.flac", BASS_CTYPE_STREAM_FLAC, 48000}),
    [](const auto& each) { return each.param.name; });

TEST(Flac, IsPlayedBitForBit) {
  WebServer web;
  const std::string sine = "-ac 2 -c:a flac";
  web.put("/live", encodedSine(440, 2, sine, "x.flac"));
  const std::string wanted = encodedSine(440, 2, "-ac 2 -f s16le", "x.raw");
  Listener listener;
  Session session;
  ASSERT_NE(0u, listener.play(web.url("/live")));
  const auto sound = session.listen(1.9);
  ASSERT_LE(sound.size() * 4, wanted.size());
  const auto* samples = reinterpret_cast<const int16_t*>(wanted.data());
  size_t wrong = 0;
  // It begins softly, so as not to click.
  for (size_t i = Tape::kRate / 10; i < sound.size(); ++i) {
    if (sound[i] != static_cast<float>(samples[2 * i]) / 32768.0f) ++wrong;
  }
  EXPECT_EQ(0u, wrong);
}

TEST(Ogg, ChainPlaysLinkAfterLinkWithATitleEach) {
  const std::string stream =
      encodedSine(440, 1.5, "-c:a libvorbis -ar 44100 -ac 2 -metadata title=One", "x.ogg") +
      encodedSine(660, 1.5, "-c:a libopus -metadata title=Two -metadata artist=Band", "x.opus") +
      "garbage where a connection broke" +
      encodedSine(880, 1.5, "-c:a libvorbis -ar 22050 -metadata title=Three", "x.ogg") +
      encodedSine(1100, 1.5, "-c:a flac -metadata title=Four", "x.oga");
  WebServer web;
  web.put("/live", stream, "application/ogg");
  Listener listener;
  Session session;
  const HSTREAM channel = listener.play(web.url("/live"));
  ASSERT_NE(0u, channel);
  EXPECT_EQ((Info{BASS_CTYPE_STREAM_OGG, 44100, 2}), infoOf(channel));
  const auto sound = session.listen(5.7);
  EXPECT_EQ((std::vector<int>{440, 660, 880, 1100}), tonesIn(sound, {440, 660, 880, 1100}));
  ASSERT_TRUE(listener.waitFor(Note::end, 1));
  EXPECT_EQ((std::vector<std::string>{"StreamTitle='One';", "StreamTitle='Band - Two';",
                                      "StreamTitle='Three';", "StreamTitle='Four';"}),
            texts(listener.notes(Note::title)));
  EXPECT_EQ(stream, listener.bytes());
  EXPECT_EQ((Info{BASS_CTYPE_STREAM_FLAC, 48000, 1}), infoOf(channel));
}

TEST(Stream, GoesOnWhenTheServerChangesWhatItSends) {
  std::string noise(5000, '\0');
  for (size_t i = 0; i < noise.size(); ++i) noise[i] = static_cast<char>(i * i / 7);
  const auto mp3 = [](int tone, const std::string& words) {
    return encodedSine(tone, 1.2, "-c:a libmp3lame " + words + " -write_xing 0 -id3v2_version 0",
                       "x.mp3");
  };
  WebServer web;
  const std::string first = mp3(440, "-b:a 128k -ar 44100 -ac 2");
  web.put("/live", first.substr(0, first.size() - 200)  // ends within a frame
                       + mp3(660, "-b:a 64k -ar 22050 -ac 1") + noise +
                       mp3(880, "-b:a 128k -ar 48000") +
                       encodedSine(1100, 1.2, "-c:a aac -ar 44100 -b:a 128k", "x.aac") +
                       encodedSine(550, 1.2, "-c:a libvorbis", "x.ogg") +
                       encodedSine(770, 1.2, "-c:a flac -ac 2", "x.flac"));
  Listener listener;
  Session session;
  const HSTREAM channel = listener.play(web.url("/live"));
  ASSERT_NE(0u, channel);
  EXPECT_EQ((Info{BASS_CTYPE_STREAM_MP3, 44100, 2}), infoOf(channel));
  const auto sound = session.listen(6.5);
  EXPECT_EQ((std::vector<int>{440, 660, 880, 1100, 550, 770}),
            tonesIn(sound, {440, 660, 880, 1100, 550, 770}));
  EXPECT_EQ((Info{BASS_CTYPE_STREAM_FLAC, 48000, 2}), infoOf(channel));
}

}  // namespace
}  // namespace engine_test
