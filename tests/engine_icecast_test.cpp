#include <gtest/gtest.h>

#include "tests/engine_harness.h"
#include "tests/icecast.h"

namespace engine_test {
namespace {

void hear440(const Icecast& server, BASS_DWORD type) {
  Listener listener;
  Session session;
  const HSTREAM stream = listener.play(server.url());
  ASSERT_NE(0u, stream) << BASS_ErrorGetCode();
  session.listen(0.5);
  const auto sound = session.listen(1.5);
  EXPECT_GT(toneShare(sound, 440), 0.9);
  BASS_CHANNELINFO info;
  ASSERT_TRUE(BASS_ChannelGetInfo(stream, &info));
  EXPECT_EQ(type, info.ctype);
}

TEST(Icecast, IsHeardInMp3) {
  const Icecast server({"-c:a", "libmp3lame", "-b:a", "128k", "-f", "mp3"}, "audio/mpeg", 65535);
  hear440(server, BASS_CTYPE_STREAM_MP3);
}

TEST(Icecast, IsHeardInAac) {
  const Icecast server({"-c:a", "aac", "-b:a", "96k", "-f", "adts"}, "audio/aac", 65535);
  hear440(server, BASS_CTYPE_STREAM_AAC);
}

TEST(Icecast, IsHeardInOgg) {
  const std::pair<std::string, BASS_DWORD> codecs[] = {{"libvorbis", BASS_CTYPE_STREAM_OGG},
                                                       {"libopus", BASS_CTYPE_STREAM_OGG}};
  for (const auto& [codec, type] : codecs) {
    const Icecast server({"-c:a", codec, "-f", "ogg"}, "application/ogg", 65535);
    hear440(server, type);
  }
}

TEST(Icecast, IsHeardWithoutABurst) {
  const Icecast server({"-c:a", "libmp3lame", "-b:a", "128k", "-f", "mp3"}, "audio/mpeg", 0);
  hear440(server, BASS_CTYPE_STREAM_MP3);
}

TEST(Icecast, TellsItsTitlesAndItsEnd) {
  Icecast server({"-c:a", "libmp3lame", "-b:a", "128k", "-f", "mp3"}, "audio/mpeg", 65535);
  Listener listener;
  Session session;
  const HSTREAM stream = listener.play(server.url());
  ASSERT_NE(0u, stream) << BASS_ErrorGetCode();
  const std::string name = BASS_ChannelGetTags(stream, BASS_TAG_ICY);
  EXPECT_FALSE(name.empty());
  server.setTitle("First%20-%20One");
  ASSERT_TRUE(listener.waitFor(Listener::Note::title, 1));
  server.setTitle("Second%20-%20Two");
  ASSERT_TRUE(listener.waitFor(Listener::Note::title, 2));
  const auto titles = listener.notes(Listener::Note::title);
  EXPECT_EQ("StreamTitle='First - One';", titles[titles.size() - 2].text);
  EXPECT_EQ("StreamTitle='Second - Two';", titles.back().text);
  EXPECT_STREQ("StreamTitle='Second - Two';", BASS_ChannelGetTags(stream, BASS_TAG_META));
  server.endSource();
  EXPECT_TRUE(listener.waitFor(Listener::Note::end, 1));
}

}  // namespace
}  // namespace engine_test
