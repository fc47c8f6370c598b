// What may stand at a stream's address: playlists, a server's page, chunks.
#include <gtest/gtest.h>

#include <chrono>

#include "tests/engine_harness.h"
#include "tests/engine_web.h"

namespace engine_test {
namespace {

using namespace std::chrono_literals;

struct Address {
  const char* name;
  const char* body;  ///< of "/list"
  const char* type;
};

class Playlist : public testing::TestWithParam<Address> {};

TEST_P(Playlist, LeadsToItsFirstStreamThatAnswers) {
  WebServer web;
  web.put("/list", GetParam().body, GetParam().type);
  web.put("/more/nested.m3u", "# a comment\r\n\r\n../live\r\n", "audio/x-mpegurl");
  web.put("/live", encodedSine(440, 3, kMp3, "x.mp3"));
  Listener listener;
  Session session;
  hear440(session, listener.play(web.url("/list")), BASS_CTYPE_STREAM_MP3);
}

INSTANTIATE_TEST_SUITE_P(
    Stream, Playlist,
    testing::Values(
        Address{"Pls",
                "[playlist]\r\nNumberOfEntries=2\r\nFile1=/dead\r\nTitle1=x\r\nFile2=/live\r\n",
                "audio/x-scpls"},
        Address{"PlsOfNoType", "\xef\xbb\xbf\r\n[Playlist]\nfile1= live \n", ""},
        Address{"M3uWithTitles", "#EXTM3U\n#EXTINF:-1,Radio\nlive\n", "audio/mpeg"},
        Address{"BareM3u", "live", "audio/x-mpegurl; charset=utf-8"},
        Address{"Nested", "#EXTM3U\nmore/nested.m3u\n", "text/plain"}),
    [](const auto& each) { return each.param.name; });

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
  EXPECT_LE(web.asked().size(), 60u);
}

TEST(Stream, IsFoundBehindTheRadioServersPage) {
  WebServer web;
  web.put("/", "<HTML><HEAD>Server status</HEAD></HTML>", "text/html");
  web.put("/;", encodedSine(440, 3, kMp3, "x.mp3"), "audio/mpeg");
  Listener listener;
  Session session;
  hear440(session, listener.play(web.url("/")), BASS_CTYPE_STREAM_MP3);
}

TEST(Stream, IsTakenOutOfItsChunks) {
  const std::string sound = encodedSine(440, 3, kMp3, "x.mp3");
  std::string body;
  for (size_t at = 0, step = 1; at < sound.size(); at += step, step = 1 + at % 3001) {
    char size[32];
    const std::string piece = sound.substr(at, step);
    std::snprintf(size, sizeof size, "%zX;x=y\r\n", piece.size());
    body += size + piece + "\r\n";
  }
  WebServer web;
  web.putRaw("/live", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n" + body + "0\r\n\r\n");
  Listener listener;
  Session session;
  hear440(session, listener.play(web.url("/live")), BASS_CTYPE_STREAM_MP3);
  for (int i = 0; listener.bytes().size() < sound.size() && i < 1000; ++i) {
    std::this_thread::sleep_for(10ms);
  }
  EXPECT_EQ(sound, listener.bytes().substr(0, sound.size()));
}

}  // namespace
}  // namespace engine_test
