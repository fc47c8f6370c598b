#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "player/audio_setup.h"
#include "player/channel_type.h"
#include "player/title_tag.h"
#include "tests/player/fakes.h"
#include "tests/support/eventually.h"
#include "tests/support/temporary_folder.h"

namespace {

using Texts = std::vector<std::string>;

TEST(TitleTag, EndsTwoBeforeTheFirstSemicolon) {
  struct Case {
    std::string_view tag;
    std::optional<std::string_view> title;
  };
  const Case cases[] = {
      {"StreamTitle='A - B';StreamUrl='';", "A - B"},
      {"StreamTitle='';", ""},
      {"StreamTitle='Simon; Garfunkel';", "Simo"},
      {"StreamTitle=';", ""},
      {"StreamTitle='", ""},
      {"StreamTitle='No end'", "No end"},
      {"StreamTitle='Cut sho", "Cut sho"},
      {"StreamUrl='x';", std::nullopt},
      {"streamtitle='x';", std::nullopt},
      {"", std::nullopt},
  };
  for (const Case& each : cases) EXPECT_EQ(player::titleOf(each.tag), each.title) << each.tag;
}

TEST(ChannelType, NamesTheCodeOrSaysUnknown) {
  EXPECT_EQ(player::GetCTypeName(0x10b00), "AAC");
  EXPECT_EQ(player::GetCTypeName(0x10700), "Monkey's Audio");
  EXPECT_EQ(player::GetCTypeName(0x20005), "MO3");
  EXPECT_EQ(player::GetCTypeName(0x10004 + 0x10000), "IT");
  EXPECT_EQ(player::GetCTypeName(0x10b02), "Unknown");
}

TEST(AudioSetup, StartsTheLibraryOrSaysWhyNot) {
  const auto none = [](FakeLibrary&) {};
  const Texts both{"bass.dll", "bass_aac.dll"};
  const struct {
    const char* what;
    std::function<void(FakeLibrary&)> fault;
    Texts files;
    bool works;
    std::string text, title, error = "(never)";
  } cases[] = {
      {"all there", none, both, true, "", ""},
      {"no library", none, {}, false, "BASS.DLL does not exists", "BASS.DLL"},
      {"another version", [](auto& fake) { fake.version = 0x02040000; }, both, false,
       "BASS version 2.3 was not loaded", "Incorrect BASS.DLL"},
      {"not loaded", [](auto& fake) { fake.loads = false; }, both, false,
       "BASS version 2.3 was not loaded", "Incorrect BASS.DLL"},
      {"no output", [](auto& fake) { fake.init_works = false; }, both, false, "", "",
       "Can't initialize device\r\n\r\nError Code : 23\r\n"},
      {"no plug-in",
       none,
       {"bass.dll"},
       true,
       "bass_aac.dll not found. AAC support disabled",
       "bass_aac.dll"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    FakeLibrary fake;
    FakeDesktop desktop;
    FakeView view;
    player::AudioLibrary library;
    TestFolder folder;
    int playlists_read = 0;
    for (const auto& file : each.files) folder.put(file);
    each.fault(fake);
    const auto load = [&](const std::string& path, player::AudioLibrary& into) {
      EXPECT_EQ(path, folder.path() + "\\bass.dll");
      if (fake.loads) into = fake.table();
      return fake.loads;
    };
    EXPECT_EQ(each.works, player::initaudio({library, desktop, view, folder.path(), nullptr, load,
                                             [&] { ++playlists_read; }}));
    const auto message = desktop.messages.empty() ? FakeDesktop::Message{} : desktop.messages[0];
    EXPECT_EQ(message.text, each.text);
    EXPECT_EQ(message.title, each.title);
    EXPECT_EQ(view.now("error"), each.error);
    EXPECT_EQ(playlists_read, each.works ? 1 : 0);
    if (!each.works) continue;
    Texts expected{"GetVersion", "Init -1,44100,0", "SetConfig 3,10000", "SetConfig 15,0"};
    if (each.files.size() == 2) expected.emplace_back("PluginLoad bass_aac.dll 0");
    EXPECT_EQ(fake.calls(), expected);
    EXPECT_EQ(view.now("lblName"), "stop");
  }
}

/// First, so that it outlives the playback.
struct WithFakeLibrary {
  FakeLibrary fake;
};

class PlaybackTest : public testing::Test, protected WithFakeLibrary, protected PlayerParts {
 protected:
  PlaybackTest() {
    library = fake.table();
    streamlist = {"http://a/", "http://b/", "http://c/", ""};
    folder.put("tmpdata.pls");
    fake.ends = {1000};
    fake.downloads = {800};
    messages.msgplayerstatus = "Opening";
  }

  /// Starts, and waits until the worker has made this call.
  void startUntil(const std::string& call, int entry = 0) {
    playback.startplayer(entry);
    ASSERT_TRUE(fake.waitFor(call)) << call;
  }
  void send(std::string_view status) { fake.download(status.data(), 0, 0); }
};

TEST_F(PlaybackTest, PlaysWithNameBitrateTitleFormatAndVolume) {
  fake.icy_headers = std::string("ICY 200 OK\0icy-name:Pond FM\0ICY-NAME:Y\0icy-br:128\0", 50);
  fake.meta = "StreamTitle='A - B';";
  fake.ctype = BASS_CTYPE_STREAM_AAC;
  volume.set(4000);
  startUntil("ChannelPlay");
  EXPECT_EQ(fake.calls(), (Texts{"StreamCreateURL http://a/ 0,8388608,0", "ChannelSetSync 77,4,0,0",
                                 "ChannelSetAttributes 77,-1,4000,-101", "ChannelPlay 77,0"}));
  EXPECT_EQ(view.history("lblName"), (Texts{"stop", "Pond FM"}));
  EXPECT_EQ(view.history("lblSong"), (Texts{"Opening", "A - B"}));
  EXPECT_EQ(view.history("lblBPS"), (Texts{"", "bitrate: 128"}));
  EXPECT_EQ(view.now("lblFormat"), "aac");
  EXPECT_EQ(view.now("playing"), "yes");
}

TEST_F(PlaybackTest, WaitsUntilMoreThanThreeQuartersAreThereAndNotYetDecoded) {
  fake.downloads = {100, 754, 900, 1005};
  fake.decodes = {0, 0, 250, 250};
  startUntil("ChannelPlay");
  EXPECT_EQ(view.history("lblName"),
            (Texts{"stop", "buffering... 10%", "buffering... 75%", "buffering... 65%", "play"}));
}

TEST_F(PlaybackTest, EndsQuietlyWhenTheLibraryLosesTheStream) {
  fake.ends = {1000, BASS_FILEPOS_ERROR};
  fake.downloads = {10};
  playback.startplayer(0);
  EXPECT_TRUE(eventually([&] { return !playback.isActive(); }));
  playback.shutDown();
  EXPECT_EQ(view.history("lblName"), (Texts{"stop", "buffering... 1%", "stop"}));
  EXPECT_EQ(fake.sync, nullptr);
  EXPECT_EQ(view.now("error"), "(never)");
}

TEST_F(PlaybackTest, ChoosesTheAddressByTheEntrysElement) {
  streamlist = {"0", "1", "2", "3", "4", "5", "6", "7", "8"};
  const std::pair<int, std::string> cases[] = {{0, "0"}, {1, "2"}, {4, "8"}, {5, "1"},
                                               {6, "3"}, {7, "5"}, {100, ""}};
  for (const auto& [entry, address] : cases) {
    startUntil("StreamCreateURL " + address + " ", entry);
    if (HasFatalFailure()) return;
    playback.stopplayer();
    playback.shutDown();  // waits for the worker
  }
}

TEST_F(PlaybackTest, DoesNothingWithoutAPlaylist) {
  folder.remove("tmpdata.pls");
  playback.startplayer(0);
  folder.put("tmpdata.m3u");
  streamlist.clear();
  playback.startplayer(0);
  EXPECT_TRUE(view.history("lblName").empty());
  EXPECT_FALSE(playback.isActive());
}

TEST_F(PlaybackTest, OnlyBeepsWhileAStreamIsBeingOpened) {
  fake.open_hangs = true;
  startUntil("StreamCreateURL");
  playback.startplayer(1);
  EXPECT_EQ(desktop.beeps, 1);
  EXPECT_EQ(fake.calls().size(), 1u);
  EXPECT_EQ(view.now("playing"), "yes");
}

TEST_F(PlaybackTest, StopsABufferThatNeverFills) {
  fake.downloads = {10};
  subplayerplay.Checked = true;
  playback.startplayer(0);
  ASSERT_TRUE(view.waitFor("lblName", "buffering... 1%"));
  playback.stopplayer();
  EXPECT_FALSE(subplayerplay.Checked);
  EXPECT_EQ(icon.normal, 1);
  send("late status");
  playback.shutDown();
  EXPECT_EQ(view.now("lblName"), "stop");
  EXPECT_NE(view.now("lblBPS"), "late status");
  EXPECT_EQ(fake.sync, nullptr);
}

TEST_F(PlaybackTest, ShowsStatusTextsLaterTitlesAndTheBitrateOfAConnectionThatIsBack) {
  fake.icy_headers = std::string("icy-br:128\0", 11);
  startUntil("ChannelPlay");
  for (const char* text : {"reconnecting...", "HTTP/1.0 503 Full", "ICY 200 OK"}) send(text);
  EXPECT_EQ(view.history("lblBPS"), (Texts{"", "bitrate: 128", "reconnecting...",
                                           "HTTP/1.0 503 Full", "ICY 200 OK", "bitrate: 128"}));
  const char tag[] = "StreamTitle='Next';";
  fake.sync(1, 77, reinterpret_cast<uintptr_t>(tag), 0);
  fake.sync(1, 77, 0, 0);
  EXPECT_EQ(view.now("lblSong"), "Next");
}

TEST_F(PlaybackTest, ShowsThatAStreamHasEndedAndFreesItBeforeTheNext) {
  startUntil("ChannelPlay");
  ASSERT_TRUE(playback.isActive());
  fake.download(nullptr, 0, 0);
  ASSERT_TRUE(view.waitFor("lblName", "stop"));
  EXPECT_FALSE(playback.isActive());
  // The end of what is being replaced says nothing of the next.
  fake.open_hangs = true;
  do {  // beeps until the first worker has left
    desktop.beeps = 0;
    playback.startplayer(1);
  } while (desktop.beeps > 0);
  ASSERT_TRUE(fake.waitFor("StreamCreateURL http://c/"));
  EXPECT_EQ(fake.calls()[4], "StreamFree 77");
  fake.download(nullptr, 0, 0);
  EXPECT_TRUE(playback.isActive());
}

TEST_F(PlaybackTest, RepeatsAStopThatCameBeforeTheLibraryKnewOfTheStream) {
  fake.open_hangs = true;
  startUntil("StreamCreateURL");
  playback.stopplayer();
  send("connecting...");
  const Texts calls = fake.calls();
  EXPECT_EQ(2, std::count_if(calls.begin(), calls.end(), [](const std::string& call) {
              return call.starts_with("ChannelStop");
            }));
  EXPECT_EQ(view.history("lblBPS"), Texts{""});
  ASSERT_TRUE(fake.waitFor("StreamFree 77"));
  EXPECT_EQ(view.now("lblName"), "stop");
  EXPECT_EQ(view.now("error"), "(never)");
}

TEST_F(PlaybackTest, FollowsTheVolumeWhileItPlays) {
  startUntil("ChannelPlay");
  volume.set(20000);
  volume.set(-5);
  EXPECT_TRUE(fake.waitFor("ChannelSetAttributes 77,-1,0,-101"));
}

TEST_F(PlaybackTest, SwitchesRecordingEverywhere) {
  playback.mnurecordstream_Click();
  EXPECT_TRUE(mnurecordstream.Checked);
  EXPECT_TRUE(recorder.recordflag);
  EXPECT_EQ(view.now("recording"), "yes");
  playback.mnurecordstream_Click();
  EXPECT_FALSE(recorder.recordflag);
  EXPECT_EQ(view.now("recording"), "no");
}

}  // namespace
