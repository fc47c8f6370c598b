// HTTP Live Streaming and playlists at a station's address.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <map>

#include "engine/hls/hls_list.h"
#include "tests/engine/harness.h"
#include "tests/engine/web.h"

namespace engine_test {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using Note = Listener::Note;

/// A tag as such segments begin with; the title's frame only where there is one.
std::string id3Tag(const std::string& title) {
  const auto frame = [](const std::string& name, const std::string& text) {
    return name + "\0\0\0"s + static_cast<char>(text.size() + 1) + "\0\0\3"s + text;
  };
  const std::string frames = title.empty() ? "" : frame("TPE1", "Band") + frame("TIT2", title);
  return "ID3\4\0\0\0\0\0"s + static_cast<char>(frames.size()) + frames;
}

struct Segments {
  const char* name;
  const char* prepare;
  const char* words;
  BASS_DWORD type;
  bool ranges = false;  ///< that the server serves
};

class Hls : public testing::TestWithParam<Segments> {};

TEST_P(Hls, IsHeardAcrossItsSegments) {
  WebServer web;
  const auto files = filesOf(GetParam().prepare + sineInput(440, 2.5) + GetParam().words +
                             " -f hls -hls_time 1 -hls_playlist_type vod list.m3u8");
  if (GetParam().ranges) web.serveRanges();
  for (const auto& [name, bytes] : files) web.put("/a/" + name, bytes);
  web.put("/master",
          "#EXTM3U\n"
          "#EXT-X-STREAM-INF:BANDWIDTH=3000000,RESOLUTION=640x360,CODECS=\"avc1,mp4a\"\nfilm\n"
          "#EXT-X-STREAM-INF:BANDWIDTH=32000\nmissing\n"
          "#EXT-X-STREAM-INF:BANDWIDTH=128000,CODECS=\"mp4a.40.2\"\na/list.m3u8\n");
  Listener listener;
  Session session;
  hear440(session, listener.play(web.url("/master")), GetParam().type, 1.5);
  EXPECT_TRUE(listener.waitFor(Note::end, 1));
  EXPECT_GT(web.timesAsked(), 4u) << "no segments";
  EXPECT_LT(session.reel()->sound().size(), Tape::kRate * 3u) << "each of them once";

  web.breakOff();
  Listener again;
  ASSERT_NE(0u, again.play(web.url("/a/list.m3u8"))) << BASS_ErrorGetCode();
  EXPECT_TRUE(again.waitFor(Note::end, 1));
  EXPECT_TRUE(listener.bytes() == again.bytes()) << "something was lost";
}

INSTANTIATE_TEST_SUITE_P(
    Stream, Hls,
    testing::Values(
        Segments{"TransportAac", "", "-c:a aac -ar 44100", BASS_CTYPE_STREAM_AAC, true},
        Segments{"TransportMp3", "", "-c:a libmp3lame", BASS_CTYPE_STREAM_MP3},
        Segments{"TransportLatm", "", "-c:a aac -hls_segment_options mpegts_flags=+latm",
                 BASS_CTYPE_STREAM_AAC},
        Segments{"FragmentedMp4", "", "-c:a aac -hls_segment_type fmp4", BASS_CTYPE_STREAM_AAC},
        Segments{"TransportByteRanges", "", "-c:a libmp3lame -hls_flags single_file",
                 BASS_CTYPE_STREAM_MP3, true},
        Segments{"Mp4ByteRangesOfAServerThatGivesAll", "",
                 "-c:a aac -hls_segment_type fmp4 -hls_flags single_file", BASS_CTYPE_STREAM_AAC},
        Segments{"Encrypted", "printf 0123456789abcdef > key && printf 'key\\nkey\\n' > info && ",
                 "-c:a aac -hls_key_info_file info", BASS_CTYPE_STREAM_AAC}),
    [](const auto& each) { return each.param.name; });

TEST(Hls, TellsTheTitlesOfItsTagsWithTheirSound) {
  WebServer web;
  std::string list = "#EXTM3U\n#EXT-X-TARGETDURATION:1\n";
  std::vector<size_t> places;
  size_t bytes = 0;
  for (int i = 0; i < 4; ++i) {
    const std::string sound = encodedSine(440 + 220 * (i / 2), 1);
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
  EXPECT_EQ(
      (std::vector<std::string>{"StreamTitle='Band - Song 0';", "StreamTitle='Band - Song 2';"}),
      listener.texts(Note::title));
  EXPECT_EQ(bytes, listener.bytes().size()) << "the tags are no sound";
  EXPECT_EQ(places[1], listener.notes(Note::title).back().position);
}

/// A segment of MPEG-TS (ISO/IEC 13818-1) with MP3 and tags with titles, as radio
/// stations send it: one tag, then sound, and so on.
class TransportStream {
 public:
  TransportStream() {
    // Program 1, described at 0x100; sound (3) at 0x101, tags (0x15) at 0x102.
    addTable(0, std::string("\x00\xb0\x0d\x00\x01\xc1\x00\x00\x00\x01\xe1\x00", 12));
    const std::string sound("\x03\xe1\x01\xf0\x00", 5);
    const std::string tags = std::string("\x15\xe1\x02\xf0\x0f\x26\x0d\xff\xff", 9) + "ID3 \xff" +
                             "ID3 " + std::string("\x00\x0f", 2);
    const std::string body = std::string("\x00\x01\xc1\x00\x00\xe1\x01\xf0\x00", 9) + sound + tags;
    addTable(0x100, std::string("\x02\xb0", 2) + static_cast<char>(body.size() + 4) + body);
  }
  void addSound(const std::string& bytes) {
    for (size_t at = 0; at < bytes.size(); at += 2000) addPes(0x101, 0xc0, bytes.substr(at, 2000));
  }
  void addTag(const std::string& tag) { addPes(0x102, 0xbd, tag); }
  const std::string& bytes() const { return bytes_; }

 private:
  void addTable(unsigned pid, const std::string& section) {
    uint32_t sum = 0xffffffff;
    for (const char c : section) {
      sum ^= static_cast<uint32_t>(static_cast<unsigned char>(c)) << 24;
      for (int bit = 0; bit < 8; ++bit) sum = sum << 1 ^ ((sum & 0x80000000) != 0 ? 0x04c11db7 : 0);
    }
    std::string whole = '\0' + section;
    for (int shift = 24; shift >= 0; shift -= 8) whole += static_cast<char>(sum >> shift);
    whole.resize(184, '\xff');
    addPacket(pid, true, whole);
  }

  void addPes(unsigned pid, unsigned id, const std::string& payload) {
    const size_t length = payload.size() + 8;
    std::string pes("\0\0\1", 3);
    pes += static_cast<char>(id);
    pes += static_cast<char>(length >> 8);
    pes += static_cast<char>(length);
    pes += std::string("\x80\x80\x05\x21\x00\x01\x00\x01", 8);  // a time, of no matter here
    pes += payload;
    for (size_t at = 0; at < pes.size(); at += 184) addPacket(pid, at == 0, pes.substr(at, 184));
  }

  void addPacket(unsigned pid, bool first, const std::string& payload) {
    const size_t filling = 184 - payload.size();
    bytes_ += 'G';
    bytes_ += static_cast<char>((first ? 0x40 : 0) | pid >> 8);
    bytes_ += static_cast<char>(pid);
    bytes_ += static_cast<char>((filling != 0 ? 0x30 : 0x10) | (counters_[pid]++ & 15));
    if (filling != 0) bytes_ += static_cast<char>(filling - 1);
    if (filling > 1) bytes_ += std::string(1, '\0') + std::string(filling - 2, '\xff');
    bytes_ += payload;
  }

  std::string bytes_;
  std::map<unsigned, unsigned> counters_;
};

TEST(Hls, TellsTheTitlesOfTheListAndInTransportStreams) {
  const std::string sound = encodedSine(440, 0.5);
  WebServer web;
  for (size_t i = 0; i < 4; ++i) {
    TransportStream segment;
    if (i == 2) segment.addTag(id3Tag("Three"));
    segment.addSound(sound);
    if (i == 2) {
      segment.addTag(id3Tag("Four"));
      segment.addSound(sound);
    }
    web.put("/" + std::to_string(i), segment.bytes());
  }
  web.put("/list",
          "#EXTM3U\n#EXT-X-TARGETDURATION:1\n"
          "#EXTINF:0.5,title=\"One\",artist=\"Band\"\n0\n#EXTINF:0.5,Band - Two\n1\n"
          "#EXTINF:1,Tags - win\n2\n#EXTINF:0.5,Tags - win\n3\n#EXT-X-ENDLIST\n");
  Listener listener;
  Session session;
  ASSERT_NE(0u, listener.play(web.url("/list"))) << BASS_ErrorGetCode();
  ASSERT_TRUE(listener.waitFor(Note::end, 1));
  const auto titles = listener.notes(Note::title);
  const std::string names[] = {"One", "Two", "Three", "Four"};
  ASSERT_EQ(std::size(names), titles.size());
  for (size_t i = 0; i < std::size(names); ++i) {
    EXPECT_EQ("StreamTitle='Band - " + names[i] + "';", titles[i].text);
    // A tag's place is known when the next packet of its kind begins.
    EXPECT_NEAR(static_cast<double>(i * sound.size()), static_cast<double>(titles[i].position),
                i < 2 ? 0 : 2000)
        << names[i];
  }
  EXPECT_EQ(5 * sound.size(), listener.bytes().size());
}

TEST(HlsPlaylist, TakesForATitleOnlyWhatIsOne) {
  const std::pair<const char*, const char*> cases[] = {
      {"10,title=\"Song\",artist=\"Band\"", "Band - Song"},
      {"9.98,title=\"Say \\\"Hi\\\", now\",artist=\"A, B\",url=\"spot=\\\"F\\\"\"",
       "A, B - Say \"Hi\", now"},
      {"10,artist=\" \",title=\"News\"", "News"},
      {"10,title=\"text=\\\"Spot Block End\\\" id=\\\"7\\\"\",artist=\" \"", ""},
      {"10,title=\"\",artist=\"\"", ""},
      {"10,Band - Song (it's live)", "Band - Song (it's live)"},
      {"10,\xc3\x89lan - \xc3\x89t\xc3\xa9", "\xc3\x89lan - \xc3\x89t\xc3\xa9"},
      {"10,", ""},
      {"10", ""},
      {"10,no desc", ""},
      {"10,2026 - 12", ""},
      {"10,radio - 128.AAC", ""},
      {"10,http://x/a - b", ""},
      {"10,tvg-id=\"a - b\" group=\"c - d\"", ""}};
  for (const auto& [line, title] : cases) {
    const auto list = engine::parseHls(
        "#EXTM3U\n#EXT-X-TARGETDURATION:9\n#EXTINF:" + std::string(line) + "\na\nb\n");
    ASSERT_TRUE(list && list->segments.size() == 2);
    EXPECT_EQ(title, list->segments[0].title) << line;
    EXPECT_EQ("", list->segments[1].title) << line;
  }
}

/// Addresses and ranges of all that is played, in order; "!" where one does not go on
/// from the one before.
std::string played(const std::string& text, engine::HlsPlace place = {}) {
  const engine::Interrupt interrupt;
  auto parsed = engine::parseHls("#EXTM3U\n#EXT-X-TARGETDURATION:10\n" + text);
  if (!parsed || parsed->foreign) return "refused";
  const size_t size = parsed->segments.size();
  engine::HlsList list(std::move(*parsed), {}, interrupt, place);
  std::string all;
  engine::HlsSegment segment;
  // A live one would wait for more.
  for (bool over = false; segment.number + 1 < size || size == 0;) {
    if (list.next(segment, over) != engine::NetError::none || over) break;
    all += (all.empty() ? "" : segment.discontinuity ? " !" : " ") + segment.file.address;
    const engine::ByteRange& range = segment.file.range;
    if (!range.isAll())
      all += "@" + std::to_string(range.from) + "+" + std::to_string(range.length);
  }
  return all;
}

TEST(HlsPlaylist, UnderstandsWhatServersWrite) {
  const std::pair<const char*, const char*> cases[] = {
      {"#EXT-X-BYTERANGE:10@5\na\n#EXT-X-BYTERANGE:20\na\n#EXT-X-BYTERANGE:7\nb\nb\n",
       "a@5+10 a@15+20 b@0+7 b"},
      {"#EXT-X-BYTERANGE:0@5\na\nb\n", "b"},
      {"a\n#EXT-X-DISCONTINUITY\nb\nc\n", "a !b c"},
      {"a\n#EXT-X-GAP\nb\nc\n", "a !c"},
      {"#EXT-X-PART-INF:PART-TARGET=1\na\n#EXT-X-PART:DURATION=1,URI=\"p\"\nb\n"
       "#EXT-X-PRELOAD-HINT:TYPE=PART,URI=\"q\"\n",
       "a b"},
      {"#EXT-X-DEFINE:NAME=\"x\",VALUE=\"1\"\n#EXT-X-DEFINE:NAME=\"y\",VALUE=\"{$x}2\"\n"
       "a{$x}{$y}\nb\n",
       "a112 b"},
      {"#EXT-X-DEFINE:NAME=\"x\",VALUE=\"1\"\na{$z}\n", "refused"},
      {"#EXT-X-DEFINE:QUERYPARAM=\"x\"\na{$x}\n", "refused"}};
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(expected, played(text + "#EXT-X-ENDLIST"s)) << text;
  }
}

TEST(HlsList, GoesOnBehindTheLastSegmentHeard) {
  const auto numbered = [](int first, int count, const std::string& name = "s") {
    std::string text = "#EXT-X-MEDIA-SEQUENCE:" + std::to_string(first) + "\n";
    for (int i = first; i < first + count; ++i) text += name + std::to_string(i) + "\n";
    return text;
  };
  const auto began = [](const std::string& text, uint64_t number, const std::string& file) {
    const std::string all = played(text, {true, number, {file, {}}});
    return all.substr(0, all.find(' '));
  };
  EXPECT_EQ("s14", began(numbered(10, 8), 13, "s13"));
  EXPECT_EQ("t14", began(numbered(10, 8, "t"), 13, "s13")) << "another session's addresses";
  EXPECT_EQ("s3", began("#EXT-X-MEDIA-SEQUENCE:100\ns1\ns2\ns3\ns4\ns5\ns6\n", 42, "s2"))
      << "counts anew, addresses go on";
  EXPECT_EQ("t5", began(numbered(0, 8, "t"), 42, "s42")) << "all is new";
  EXPECT_EQ("s20", began(numbered(20, 8), 13, "s13")) << "missed some";
  EXPECT_EQ("s47", began(numbered(10, 40), 13, "s13")) << "missed minutes";
  EXPECT_EQ("s14", began(numbered(10, 40) + "#EXT-X-ENDLIST", 13, "s13"));
  EXPECT_EQ("", began(numbered(10, 4) + "#EXT-X-ENDLIST", 13, "s13"));
}

TEST(HlsPlaylist, TakesTheSoundBesideAPictureWhereItHasAListOfItsOwn) {
  const std::pair<const char*, const char*> cases[] = {
      {"GROUP-ID=\"a\",URI=\"one\"\n#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"a\",URI=\"two\",DEFAULT=YES",
       "two"},
      {"GROUP-ID=\"a\",URI=\"one\"\n#EXT-X-MEDIA:TYPE=AUDIO,GROUP-ID=\"a\",DEFAULT=YES", "film"},
      {"GROUP-ID=\"b\",URI=\"one\"", "film"}};
  for (const auto& [media, choice] : cases) {
    const auto list = engine::parseHls("#EXTM3U\n#EXT-X-MEDIA:TYPE=AUDIO," + std::string(media) +
                                       "\n#EXT-X-STREAM-INF:BANDWIDTH=900000,RESOLUTION=640x360,"
                                       "AUDIO=\"a\"\nfilm\n");
    ASSERT_TRUE(list);
    EXPECT_EQ(choice, list->choice()) << media;
  }
}

/// A server of segments with a tone each, and of live lists of them.
class LiveHls : public testing::Test {
 protected:
  void putSegments(int count, double seconds) {
    for (int i = 0; i < count; ++i) {
      tones.push_back(440 + 110 * i);
      web.put(segment(i), encodedSine(tones.back(), seconds));
    }
  }
  static std::string segment(int number) { return "/s/" + std::to_string(number) + "?x=/"; }

  void putList(int first, int count, const std::string& end = "") {
    std::string list =
        "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXT-X-MEDIA-SEQUENCE:" + std::to_string(first) + "\n";
    for (int i = first; i < first + count; ++i) list += "#EXTINF:1,\n.." + segment(i) + "\n";
    web.put("/live/list", list + end);
  }
  HSTREAM play() { return listener.play(web.url("/live/list")); }

  std::vector<int> tones;
  WebServer web;
  Listener listener;
  Session session;
};

TEST_F(LiveHls, IsFollowedFromNearItsEnd) {
  putSegments(7, 1);
  putList(0, 5);
  ASSERT_NE(0u, play()) << BASS_ErrorGetCode();
  session.listen(1);
  putList(1, 5);
  session.listen(1);
  putList(2, 5, "#EXT-X-ENDLIST\n");
  ASSERT_TRUE(listener.waitFor(Note::end, 1));
  session.listen(2);
  EXPECT_EQ(std::vector<int>(tones.begin() + 2, tones.end()),
            tonesIn(session.reel()->sound(), tones));
  for (int i = 2; i < 7; ++i) EXPECT_EQ(1u, web.timesAsked(segment(i))) << i;
}

TEST_F(LiveHls, RepeatsNothingAfterALostConnection) {
  putSegments(8, 0.5);
  putList(0, 3);
  ASSERT_NE(0u, play()) << BASS_ErrorGetCode();
  web.put("/live/list", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXT-X-MEDIA-SEQUENCE:3\nx3\nx4\nx5\n");
  ASSERT_TRUE(eventually([&] { return listener.count("reconnecting...") > 0; }));
  // Without a memory it would be heard from its beginning.
  putList(0, 8, "#EXT-X-ENDLIST\n");
  ASSERT_TRUE(listener.waitFor(Note::end, 1));
  EXPECT_EQ(tones, tonesIn(session.listen(3.8), tones, 0.2));
}

TEST_F(LiveHls, EndsAtOnceWhileItWaitsForTheNextSegment) {
  putSegments(1, 1);
  web.put("/live/list", "#EXTM3U\n#EXT-X-TARGETDURATION:10\n.." + segment(0) + "\n");
  const HSTREAM stream = play();
  ASSERT_NE(0u, stream);
  session.listen(0.8);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_TRUE(BASS_StreamFree(stream));
  EXPECT_LT(std::chrono::steady_clock::now() - start, 2s);
}

}  // namespace
}  // namespace engine_test
