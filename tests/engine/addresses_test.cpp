// What may stand at a stream's address: playlists, a server's page, chunks.
#include <gtest/gtest.h>

#include "tests/engine/harness.h"
#include "tests/engine/web.h"

namespace engine_test {
namespace {

TEST(Playlist, LeadsToItsFirstStreamThatAnswers) {
  const struct {
    const char* name;
    const char* body;
    const char* type;
  } lists[] = {
      {"PLS", "[playlist]\r\nNumberOfEntries=2\r\nFile1=/dead\r\nTitle1=x\r\nFile2=/live\r\n",
       "audio/x-scpls"},
      {"PLS of no type", "\xef\xbb\xbf\r\n[Playlist]\nfile1= live \n", ""},
      {"M3U with titles", "#EXTM3U\n#EXTINF:-1,Radio\nlive\n", "audio/mpeg"},
      {"bare M3U", "live", "audio/x-mpegurl; charset=utf-8"},
      {"nested", "#EXTM3U\nmore/nested.m3u\n", "text/plain"}};
  WebServer web;
  web.put("/more/nested.m3u", "# a comment\r\n\r\n../live\r\n", "audio/x-mpegurl");
  web.put("/live", encodedSine(440, 3));
  for (const auto& list : lists) {
    SCOPED_TRACE(list.name);
    web.put("/list", list.body, list.type);
    Listener listener;
    Session session;
    hear440(session, listener.play(web.url("/list")), BASS_CTYPE_STREAM_MP3);
  }
}

TEST(Playlist, ThatLeadsNowhereFailsSoonWithTheRightCode) {
  WebServer web;
  web.put("/round", "#EXTM3U\n/round\n/round\n");
  web.put("/empty", "[playlist]\nNumberOfEntries=0\n");
  web.put("/dead", "#EXTM3U\n/none\nmms://other/\n");
  web.put("/hls", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nnone\n#EXT-X-ENDLIST\n");
  web.put("/page", "<html>about us</html>", "text/html");
  const std::pair<const char*, int> cases[] = {{"/round", BASS_ERROR_FILEFORM},
                                               {"/empty", BASS_ERROR_FILEFORM},
                                               {"/dead", BASS_ERROR_FILEOPEN},
                                               {"/hls", BASS_ERROR_FILEFORM},
                                               {"/page", BASS_ERROR_FILEFORM}};
  Session session;
  for (const auto& [path, code] : cases) {
    Listener listener;
    EXPECT_EQ(0u, listener.play(web.url(path))) << path;
    EXPECT_EQ(code, BASS_ErrorGetCode()) << path;
  }
  EXPECT_LE(web.timesAsked(), 60u);
}

TEST(Stream, IsFoundBehindTheRadioServersPage) {
  WebServer web;
  web.put("/", "<HTML><HEAD>Server status</HEAD></HTML>", "text/html");
  web.put("/;", encodedSine(440, 3), "audio/mpeg");
  Listener listener;
  Session session;
  hear440(session, listener.play(web.url("/")), BASS_CTYPE_STREAM_MP3);
}

}  // namespace
}  // namespace engine_test
