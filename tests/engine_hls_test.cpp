// HTTP Live Streaming and playlists at a station's address.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <future>

#include "tests/engine_harness.h"
#include "tests/engine_web.h"

namespace engine_test {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using Note = Listener::Note;

const std::string kMp3 = "-c:a libmp3lame -b:a 128k -write_xing 0 -id3v2_version 0 ";

/// A tag as such segments begin with; the title's frame only where there is one.
std::string id3Tag(const std::string& title) {
  const auto frame = [](const std::string& name, const std::string& text) {
    return name + "\0\0\0"s + static_cast<char>(text.size() + 1) + "\0\0\3"s + text;
  };
  const std::string frames = title.empty() ? "" : frame("TPE1", "Band") + frame("TIT2", title);
  return "ID3\4\0\0\0\0\0"s + static_cast<char>(frames.size()) + frames;
}

void hear440(Session& session, HSTREAM stream, BASS_DWORD type) {
  ASSERT_NE(0u, stream) << BASS_ErrorGetCode();
  session.listen(0.3);
  EXPECT_GT(toneShare(session.listen(2.5), 440), 0.95);
  BASS_CHANNELINFO info;
  ASSERT_TRUE(BASS_ChannelGetInfo(stream, &info));
  EXPECT_EQ(type, info.ctype);
}

struct Segments {
  const char* name;
  const char* prepare;
  const char* words;
  BASS_DWORD type;
};

class Hls : public testing::TestWithParam<Segments> {};

TEST_P(Hls, IsHeardAcrossItsSegments) {
  WebServer web;
  const auto files = filesOf(GetParam().prepare + sineInput(440, 3.5) + GetParam().words +
                             " -f hls -hls_time 1 -hls_playlist_type vod list.m3u8");
  EXPECT_GT(files.size(), 4u) << "no segments";
  for (const auto& [name, bytes] : files) web.put("/a/" + name, bytes);
  web.put("/master",
          "#EXTM3U\n"
          "#EXT-X-STREAM-INF:BANDWIDTH=3000000,RESOLUTION=640x360,CODECS=\"avc1,mp4a\"\nfilm\n"
          "#EXT-X-STREAM-INF:BANDWIDTH=32000\nmissing\n"
          "#EXT-X-STREAM-INF:BANDWIDTH=128000,CODECS=\"mp4a.40.2\"\na/list.m3u8\n");
  Listener listener;
  Session session;
  hear440(session, listener.play(web.url("/master")), GetParam().type);
  EXPECT_TRUE(listener.waitFor(Note::end, 1));
}

INSTANTIATE_TEST_SUITE_P(
    Stream, Hls,
    testing::Values(
        Segments{"TransportAac", "", "-c:a aac -ar 44100", BASS_CTYPE_STREAM_AAC},
        Segments{"TransportMp3", "", "-c:a libmp3lame", BASS_CTYPE_STREAM_MP3},
        Segments{"FragmentedMp4", "", "-c:a aac -hls_segment_type fmp4", BASS_CTYPE_STREAM_AAC},
        Segments{"Encrypted", "printf 0123456789abcdef > key && printf 'key\\nkey\\n' > info && ",
                 "-c:a aac -hls_key_info_file info", BASS_CTYPE_STREAM_AAC}),
    [](const auto& each) { return each.param.name; });

TEST(Hls, TellsTheTitlesOfItsTagsWithTheirSound) {
  WebServer web;
  std::string list = "#EXTM3U\n#EXT-X-TARGETDURATION:1\n";
  std::vector<size_t> places;
  size_t bytes = 0;
  for (int i = 0; i < 4; ++i) {
    const std::string sound = encodedSine(440 + 220 * (i / 2), 1, kMp3, "x.mp3");
    web.put("/" + std::to_string(i), id3Tag(i % 2 == 0 ? "Song " + std::to_string(i) : "") + sound);
    list += "#EXTINF:1,\n" + std::to_string(i) + "\n";
    if (i % 2 == 0) places.push_back(bytes);
    bytes += sound.size();
  }
  web.put("/list", list + "#EXT-X-ENDLIST\n", "audio/mpegurl");
  Listener listener;
  Session session;
  ASSERT_NE(0u, listener.play(web.url("/list"))) << BASS_ErrorGetCode();
  EXPECT_EQ((std::vector<int>{440, 660}), tonesIn(session.listen(3.7), {440, 660}));
  ASSERT_TRUE(listener.waitFor(Note::end, 1));
  const auto titles = listener.notes(Note::title);
  EXPECT_EQ(
      (std::vector<std::string>{"StreamTitle='Band - Song 0';", "StreamTitle='Band - Song 2';"}),
      texts(titles));
  EXPECT_EQ(bytes, listener.bytes().size()) << "the tags are no sound";
  ASSERT_EQ(2u, titles.size());
  EXPECT_EQ(places[1], titles[1].position);
}

/// A live list of one-second segments, from `first` on.
std::string liveList(int first, int count) {
  std::string list =
      "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXT-X-MEDIA-SEQUENCE:" + std::to_string(first) + "\n";
  for (int i = first; i < first + count; ++i) {
    list += "#EXTINF:1,\n../s/" + std::to_string(i) + "?x=/\n";
  }
  return list;
}

TEST(Hls, FollowsALiveListFromNearItsEnd) {
  const std::vector<int> tones = {440, 550, 660, 770, 880, 990, 1100};
  WebServer web;
  for (size_t i = 0; i < tones.size(); ++i) {
    web.put("/s/" + std::to_string(i) + "?x=/", encodedSine(tones[i], 1, kMp3, "x.mp3"));
  }
  web.put("/live/list", liveList(0, 5));
  Listener listener;
  Session session;
  ASSERT_NE(0u, listener.play(web.url("/live/list"))) << BASS_ErrorGetCode();
  auto sound = session.listen(1);
  web.put("/live/list", liveList(1, 5));
  const auto more = session.listen(1);
  sound.insert(sound.end(), more.begin(), more.end());
  web.put("/live/list", liveList(2, 5) + "#EXT-X-ENDLIST\n");
  ASSERT_TRUE(listener.waitFor(Note::end, 1));
  const auto rest = session.listen(2);
  sound.insert(sound.end(), rest.begin(), rest.end());
  EXPECT_EQ((std::vector<int>{660, 770, 880, 990, 1100}), tonesIn(sound, tones));
  const auto asked = web.asked();
  for (int i = 2; i < 7; ++i) {
    EXPECT_EQ(1, std::count(asked.begin(), asked.end(), "/s/" + std::to_string(i) + "?x=/")) << i;
  }
}

TEST(Hls, EndsAtOnceWhileItWaitsForTheNextSegment) {
  WebServer web;
  web.put("/s/0?x=/", encodedSine(440, 1, kMp3, "x.mp3"));
  web.put("/live/list", liveList(0, 1));
  Listener listener;
  Session session;
  const HSTREAM stream = listener.play(web.url("/live/list"));
  ASSERT_NE(0u, stream);
  const auto lists = [&] {
    const auto asked = web.asked();
    return std::count(asked.begin(), asked.end(), "/live/list");
  };
  for (int i = 0; lists() < 2 && i < 1000; ++i) std::this_thread::sleep_for(10ms);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(BASS_StreamFree(stream));
  EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
}

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
