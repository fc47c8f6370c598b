#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <future>

#include "tests/engine/harness.h"

namespace engine_test {
namespace {

using namespace std::chrono_literals;
using namespace std::string_literals;
using Note = Listener::Note;

const std::string kHead = "HTTP/1.0 200 OK\r\nContent-Type: audio/mpeg\r\n";

TEST(Stream, PlaysAStationsToneAndGivesItsHeadersAsSent) {
  const std::pair<const char*, BASS_DWORD> codecs[] = {{"mp3", BASS_CTYPE_STREAM_MP3},
                                                       {"aac", BASS_CTYPE_STREAM_AAC}};
  for (const auto& [codec, type] : codecs) {
    SCOPED_TRACE(codec);
    Listener listener;
    Session session;
    const Station station = radio().station(codec, 44100);
    const HSTREAM stream = listener.play(radio().stream(station, "redirect"));
    ASSERT_NE(0u, stream) << BASS_ErrorGetCode();
    // Half a second in, the codec's own start is over.
    session.listen(0.5);
    EXPECT_TRUE(hasTone(session.listen(1.5), station.tone));
    BASS_CHANNELINFO info;
    ASSERT_TRUE(BASS_ChannelGetInfo(stream, &info));
    EXPECT_EQ(type, info.ctype);
    EXPECT_EQ(44100u, info.freq);
    std::string tags;
    const char* text = BASS_ChannelGetTags(stream, BASS_TAG_ICY);
    for (; text != nullptr && *text != '\0'; text += std::strlen(text) + 1) tags += text + "\n"s;
    for (const std::string& line :
         {"icy-name:" + station.name, "icy-br:" + std::to_string(station.kbit)}) {
      EXPECT_NE(std::string::npos, tags.find(line + "\n")) << tags;
    }
    EXPECT_EQ(1u, listener.count("HTTP/1.0 200 OK"));
    EXPECT_TRUE(BASS_StreamFree(stream));
  }
}

TEST(Stream, TellsTitlesAtTheirPlaceAmongTheExactBytes) {
  constexpr size_t kInterval = 1000;
  const std::string sound = soundBytes("bells-00.mp3").substr(0, 20 * kInterval);
  Listener listener;
  Session session;
  ScriptedServer server;
  auto opening = std::async(std::launch::async, [&] { return listener.create(server.url()); });
  EXPECT_NE(std::string::npos, server.accept().find("\r\nIcy-MetaData: 1\r\n"));
  const auto piece = [&](size_t from, size_t to) {
    std::string bytes;
    for (size_t i = from; i < to; ++i) {
      bytes += sound.substr(i * kInterval, kInterval);
      bytes += titleBlock(i % 5 == 0 ? "Song " + std::to_string(i) : "");
    }
    return bytes;
  };
  const size_t length = piece(0, 20).size();
  server.send(kHead + "icy-metaint:1000\r\nContent-Length: " + std::to_string(length) + "\r\n\r\n" +
              piece(0, 8));
  const HSTREAM stream = opening.get();
  ASSERT_NE(0u, stream);
  EXPECT_TRUE(eventually([&] {
    return BASS_StreamGetFilePosition(stream, BASS_FILEPOS_DOWNLOAD) >= 8 * kInterval &&
           BASS_ChannelGetTags(stream, BASS_TAG_META) != nullptr;
  }));
  EXPECT_STREQ("StreamTitle='Song 0';", BASS_ChannelGetTags(stream, BASS_TAG_META))
      << "the title at the first opportunity is the present one, the next one's sound is to come";
  EXPECT_TRUE(listener.bytes().empty()) << "told before they sound";
  listener.syncTitles(stream);
  EXPECT_TRUE(BASS_ChannelPlay(stream, 0));
  server.send(piece(8, 20));
  server.close();
  ASSERT_TRUE(listener.waitFor(Note::end, 1));
  EXPECT_EQ(sound, listener.bytes());
  const auto titles = listener.notes(Note::title);
  ASSERT_EQ(3u, titles.size());
  for (size_t i = 0; i < titles.size(); ++i) {
    EXPECT_EQ("StreamTitle='Song " + std::to_string(5 + 5 * i) + "';", titles[i].text);
    EXPECT_EQ((6 + 5 * i) * kInterval, titles[i].position);
  }
}

TEST(Stream, TellsATitleThatCameBetweenReadingAndAskingForMore) {
  Listener listener;
  Session session;
  ScriptedServer server;
  auto opening = std::async(std::launch::async, [&] { return listener.create(server.url()); });
  server.accept();
  const std::string sound = soundBytes("bells-00.mp3");
  server.send(kHead + "icy-metaint:4000\r\n\r\n" + sound.substr(0, 4000));
  const HSTREAM stream = opening.get();
  ASSERT_NE(0u, stream);
  EXPECT_EQ(nullptr, BASS_ChannelGetTags(stream, BASS_TAG_META));
  server.send(titleBlock("Here") + sound.substr(4000, 100));
  EXPECT_TRUE(eventually(
      [&] { return BASS_StreamGetFilePosition(stream, BASS_FILEPOS_DOWNLOAD) >= 4100; }));
  listener.syncTitles(stream);
  EXPECT_TRUE(listener.waitFor(Note::title, 1));
}

TEST(Stream, RefusesAddressesThatLeadNowhere) {
  Listener listener;
  Session session;
  const std::pair<std::string, int> cases[] = {{"", BASS_ERROR_ILLPARAM},
                                               {"ftp://127.0.0.1/", BASS_ERROR_ILLPARAM},
                                               {"http://127.0.0.1:99999/", BASS_ERROR_ILLPARAM},
                                               {"http://127.0.0.1:1/", BASS_ERROR_FILEOPEN},
                                               {"http://a..b/", BASS_ERROR_FILEOPEN}};
  for (const auto& [url, code] : cases) {
    EXPECT_EQ(0u, listener.create(url)) << url;
    EXPECT_EQ(code, BASS_ErrorGetCode()) << url;
  }
}

TEST(Stream, GivesUpAtOnceWhereverAServerLeavesItWaiting) {
  const struct {
    const char* habits;  ///< null: the connect itself hangs
    bool whole_engine;   ///< ended by BASS_Free
  } cases[] = {{nullptr, false},         {"hang", false},         {"hang-headers", false},
               {"hang-body-100", false}, {"slow-drip-10", false}, {nullptr, true},
               {"hang", true},           {"slow-drip-10", true}};
  const ScriptedServer deaf(true);
  const Station station = radio().station("mp3", 44100);
  for (const auto& [habits, whole_engine] : cases) {
    Listener listener;
    auto session = std::make_unique<Session>();
    const std::string url = habits == nullptr ? deaf.url() : radio().stream(station, habits);
    auto opening = std::async(std::launch::async, [&] {
      const HSTREAM stream = listener.play(url);
      return std::pair(stream, BASS_ErrorGetCode());
    });
    ASSERT_EQ(std::future_status::timeout, opening.wait_for(300ms)) << url << " is no trap";
    const auto start = std::chrono::steady_clock::now();
    if (whole_engine) {
      session.reset();
    } else {
      // The player's stop knows no handle yet.
      BASS_ChannelStop(0);
    }
    const auto [stream, code] = opening.get();
    EXPECT_EQ(0u, stream);
    EXPECT_TRUE(code == BASS_ERROR_HANDLE || code == BASS_ERROR_INIT) << code;
    // Far below all time-outs, far above any machine's mood.
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2s) << url;
  }
}

TEST(Stream, CanBeStoppedFromItsVeryFirstStatusText) {
  Session session;
  const auto stop = [](const void*, BASS_DWORD, uintptr_t) { BASS_ChannelStop(0); };
  const std::string url = radio().stream(radio().station("mp3", 44100), "hang");
  EXPECT_EQ(0u, BASS_StreamCreateURL(url.c_str(), 0, BASS_STREAM_STATUS, stop, 0));
  EXPECT_EQ(BASS_ERROR_HANDLE, BASS_ErrorGetCode());
}

TEST(Stream, EndsThePlayersWaitForTheBufferWhenStopped) {
  Listener listener;
  Session session;
  // Recognised, then silent far below three quarters of the buffer.
  const std::string url = radio().stream(radio().station("mp3", 44100), "hang-body-2500");
  const HSTREAM stream = listener.create(url);
  ASSERT_NE(0u, stream);
  EXPECT_NE(BASS_FILEPOS_ERROR, BASS_StreamGetFilePosition(stream, BASS_FILEPOS_END));
  EXPECT_TRUE(BASS_ChannelStop(stream));
  EXPECT_EQ(BASS_FILEPOS_ERROR, BASS_StreamGetFilePosition(stream, BASS_FILEPOS_END));
  EXPECT_FALSE(BASS_ChannelPlay(stream, 0));
  EXPECT_EQ(BASS_ERROR_NOPLAY, BASS_ErrorGetCode());
  EXPECT_TRUE(BASS_StreamFree(stream));
  EXPECT_FALSE(BASS_StreamFree(stream));
  EXPECT_EQ(BASS_ERROR_HANDLE, BASS_ErrorGetCode());
}

TEST(Stream, GoesOnAfterAStall) {
  Listener listener;
  Session session;
  const Station station = radio().station("mp3", 44100);
  ASSERT_NE(0u, listener.play(radio().stream(station, "stall-2,no-burst")));
  session.listen(1.5);
  EXPECT_TRUE(hasTone(session.listen(2), station.tone));
}

TEST(Stream, FollowsTheVolumeOnItsConfiguredScale) {
  Listener listener;
  Session session;
  const Station station = radio().station("mp3", 44100);
  const HSTREAM stream = listener.play(radio().stream(station));
  ASSERT_NE(0u, stream);
  session.listen(1);
  const double full = rootMeanSquare(session.listen(2));
  EXPECT_TRUE(BASS_ChannelSetAttributes(stream, -1, 2500, -101));
  session.listen(1);
  EXPECT_NEAR(0.25, rootMeanSquare(session.listen(2)) / full, 0.1);
  EXPECT_TRUE(BASS_ChannelSetAttributes(stream, -1, 0, -101));
  session.listen(1);
  EXPECT_EQ(0, rootMeanSquare(session.listen(0.5)));
  EXPECT_FALSE(BASS_ChannelSetAttributes(stream, -1, 10001, -101));
  EXPECT_EQ(BASS_ERROR_ILLPARAM, BASS_ErrorGetCode());
}

TEST(Stream, CanBeFreedFromItsOwnCallback) {
  static std::atomic<HSTREAM> own{0};
  static std::atomic<bool> freed{false};
  own = 0;
  Session session;
  const auto free_itself = [](const void*, BASS_DWORD, uintptr_t) {
    if (own != 0 && BASS_StreamFree(own.exchange(0))) freed = true;
  };
  const std::string url = radio().stream(radio().station("mp3", 44100), "no-burst");
  const HSTREAM stream = BASS_StreamCreateURL(url.c_str(), 0, 0, free_itself, 0);
  EXPECT_TRUE(BASS_ChannelPlay(stream, 0));
  own = stream;
  EXPECT_TRUE(eventually([] { return freed.load(); }));
}

TEST(Engine, KeepsTheCallersReasonsApart) {
  EXPECT_EQ(0x0203u, BASS_GetVersion() >> 16);
  EXPECT_EQ(0u, BASS_StreamCreateURL("http://127.0.0.1/", 0, 0, nullptr, 0));
  EXPECT_EQ(BASS_ERROR_INIT, BASS_ErrorGetCode());
  EXPECT_FALSE(BASS_Init(7, 44100, 0, nullptr, nullptr));
  EXPECT_EQ(BASS_ERROR_DEVICE, BASS_ErrorGetCode());
  Session session;
  EXPECT_EQ(0u, BASS_PluginLoad("no-such-plugin.dll", 0));
  EXPECT_EQ(BASS_ERROR_FILEOPEN, BASS_ErrorGetCode());
  std::thread([] { EXPECT_EQ(BASS_OK, BASS_ErrorGetCode()); }).join();
  EXPECT_FALSE(BASS_Init(-1, 44100, 0, nullptr, nullptr));
  EXPECT_EQ(BASS_ERROR_ALREADY, BASS_ErrorGetCode());
}

}  // namespace
}  // namespace engine_test
