#include <gtest/gtest.h>

#include "tests/engine/harness.h"
#include "tests/engine/web.h"
#include "tests/support/icecast.h"

namespace engine_test {
namespace {

TEST(Icecast, IsHeardInOgg) {
  const IcecastServer server({"-c:a", "libvorbis", "-f", "ogg"}, "application/ogg");
  Listener listener;
  Session session;
  hear440(session, listener.play(server.url()), BASS_CTYPE_STREAM_OGG, 1.5);
}

TEST(Icecast, WithoutABurstTellsItsTitlesAndItsEnd) {
  IcecastServer server(kIcecastMp3, "audio/mpeg", 0);
  Listener listener;
  Session session;
  const HSTREAM stream = listener.play(server.url());
  hear440(session, stream, BASS_CTYPE_STREAM_MP3);
  for (const std::string name : {"One", "Two"}) {
    const auto is_told = [&] {
      const auto titles = listener.texts(Listener::Note::title);
      return !titles.empty() && titles.back() == "StreamTitle='Song - " + name + "';";
    };
    server.setTitle("Song%20-%20" + name);
    EXPECT_TRUE(eventually(is_told)) << name;
  }
  EXPECT_STREQ("StreamTitle='Song - Two';", BASS_ChannelGetTags(stream, BASS_TAG_META));
  server.endSource();
  EXPECT_TRUE(listener.waitFor(Listener::Note::end, 1));
}

}  // namespace
}  // namespace engine_test
