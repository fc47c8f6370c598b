// Everything but plain MP3 and AAC: containers, chains, and streams that change.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "tests/engine/harness.h"
#include "tests/engine/web.h"

namespace engine_test {
namespace {

using namespace std::string_literals;
using Note = Listener::Note;

/// Type, rate and channels.
using Info = std::array<BASS_DWORD, 3>;
Info infoOf(HSTREAM stream) {
  BASS_CHANNELINFO info = {};
  EXPECT_TRUE(BASS_ChannelGetInfo(stream, &info));
  return {info.ctype, info.freq, info.chans};
}

TEST(Format, IsPlayedWithItsTitle) {
  const struct {
    const char* words;  ///< the encoder's
    const char* file;
    BASS_DWORD type, rate;
  } formats[] = {{"-c:a libvorbis -ar 44100", "x.ogg", BASS_CTYPE_STREAM_OGG, 44100},
                 {"-c:a libopus -b:a 64k", "x.opus", BASS_CTYPE_STREAM_OGG, 48000},
                 {"-c:a flac -ar 44100", "x.oga", BASS_CTYPE_STREAM_FLAC, 44100},
                 {"-c:a flac -ac 2", "x.flac", BASS_CTYPE_STREAM_FLAC, 48000}};
  for (const auto& format : formats) {
    SCOPED_TRACE(format.file);
    const std::string tags = " -metadata artist=Band -metadata 'title=Song; live'";
    WebServer web;
    // No type, no ending: only what is inside tells.
    web.put("/live", encodedSine(440, 3, format.words + tags, format.file));
    Listener listener;
    Session session;
    const HSTREAM stream = listener.play(web.url("/live"));
    hear440(session, stream, format.type, 1.5);
    EXPECT_EQ(format.rate, infoOf(stream)[1]);
    const std::string title = "StreamTitle='Band - Song\xcd\xbe live';";
    EXPECT_EQ(std::vector{title}, listener.texts(Note::title));
    EXPECT_EQ(title, BASS_ChannelGetTags(stream, BASS_TAG_META));
  }
}

TEST(Sound, IsToTheBitWhatAnotherDecoderMakesOfIt) {
  for (const std::string& codec :
       {"-c:a flac -f flac"s, "-c:a flac -sample_fmt s16 -f flac"s, kMp3 + "-f mp3"}) {
    const std::string ffmpeg = "ffmpeg -nostdin -v error ";
    auto files =
        filesOf(ffmpeg + "-f lavfi -i anoisesrc=amplitude=0.4:duration=2:seed=1 -ar 48000 -ac 2 " +
                codec + " sound && " + ffmpeg + "-flags2 +skip_manual -i sound -f f32le raw");
    WebServer web;
    web.put("/live", files["sound"]);
    Listener listener;
    Session session;
    ASSERT_NE(0u, listener.play(web.url("/live"))) << codec;
    const auto sound = session.listen(1.7);
    std::vector<float> raw(files["raw"].size() / sizeof(float));
    std::memcpy(raw.data(), files["raw"].data(), raw.size() * sizeof(float));
    ASSERT_LE(sound.size() * 2, raw.size());
    size_t wrong = 0;
    // It begins and ends softly, so as not to click.
    constexpr size_t kRamp = Tape::kRate / 10;
    for (size_t i = kRamp; i + kRamp < sound.size(); ++i) wrong += sound[i] != raw[2 * i];
    EXPECT_EQ(0u, wrong) << codec;
  }
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
            listener.texts(Note::title));
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
