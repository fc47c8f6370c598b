#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "player/audio_setup.h"
#include "player/channel_type.h"
#include "player/playback.h"
#include "player/title_tag.h"
#include "tests/player_fakes.h"
#include "tests/player_folder.h"

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

TEST(Playback, MapsMenuEntriesToElementsInItsOwnOrder) {
  const int elements[] = {0, 2, 4, 6, 8, 1, 3, 5};
  for (int entry = 0; entry < 8; ++entry)
    EXPECT_EQ(player::Playback::elementOf(entry), elements[entry]);
}

TEST(AudioSetup, StartsTheLibraryOrSaysWhyNot) {
  struct Case {
    const char* what;
    std::function<void(FakeLibrary&)> fault;
    std::vector<std::string> files;
    bool loads, works;
    std::string text, title, error;
  };
  const auto none = [](FakeLibrary&) {};
  const Texts both{"bass.dll", "bass_aac.dll"};
  const Case cases[] = {
      {"all there", none, both, true, true, "", "", "(never)"},
      {"no library", none, {}, true, false, "BASS.DLL does not exists", "BASS.DLL", "(never)"},
      {"another version", [](FakeLibrary& fake) { fake.version = 0x02040000; }, both, true, false,
       "BASS version 2.3 was not loaded", "Incorrect BASS.DLL", "(never)"},
      {"not loaded", none, both, false, false, "BASS version 2.3 was not loaded",
       "Incorrect BASS.DLL", "(never)"},
      {"no output",
       [](FakeLibrary& fake) {
         fake.init_works = false;
         fake.error = BASS_ERROR_DEVICE;
       },
       both, true, false, "", "", "Can't initialize device\r\n\r\nError Code : 23\r\n"},
      {"no plug-in",
       none,
       {"bass.dll"},
       true,
       true,
       "bass_aac.dll not found. AAC support disabled",
       "bass_aac.dll",
       "(never)"},
  };
  for (const Case& each : cases) {
    FakeLibrary fake;
    FakeDesktop desktop;
    FakeView view;
    player::AudioLibrary library;
    TestFolder folder;
    int playlists_read = 0;
    for (const auto& file : each.files) folder.put(file);
    each.fault(fake);
    EXPECT_EQ(each.works,
              player::initaudio({.library = library,
                                 .desktop = desktop,
                                 .view = view,
                                 .program_folder = folder.path(),
                                 .main_window = nullptr,
                                 .load =
                                     [&](const std::string& path, player::AudioLibrary& into) {
                                       EXPECT_EQ(path, folder.path() + "\\bass.dll");
                                       if (each.loads) into = fake.table();
                                       return each.loads;
                                     },
                                 .playlisteinlesen = [&] { ++playlists_read; }}))
        << each.what;
    const auto message = desktop.messages.empty() ? FakeDesktop::Message{} : desktop.messages[0];
    EXPECT_EQ(message.text, each.text) << each.what;
    EXPECT_EQ(message.title, each.title) << each.what;
    EXPECT_EQ(view.now("error"), each.error) << each.what;
    EXPECT_EQ(playlists_read, each.works ? 1 : 0) << each.what;
    if (!each.works) continue;
    Texts expected{"GetVersion", "Init -1,44100,0", "SetConfig 3,10000", "SetConfig 15,0"};
    if (each.files.size() == 2) expected.emplace_back("PluginLoad bass_aac.dll 0");
    EXPECT_EQ(fake.calls(), expected) << each.what;
    EXPECT_EQ(view.now("lblName"), "stop") << each.what;
  }
}

class PlaybackTest : public testing::Test {
 protected:
  PlaybackTest() {
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

  FakeLibrary fake;
  player::AudioLibrary library = fake.table();
  FakeView view;
  FakeDesktop desktop;
  FakeIcon icon;
  tray::MenuItem subplayerplay{"Play", {}}, mnurecordstream{"Record", {}};
  app::Messages messages;
  player::Volume volume;
  player::Recorder recorder{"/nonexistent"};
  Texts streamlist{"http://a/", "http://b/", "http://c/", ""};
  TestFolder folder;
  player::Playback playback{{library, view, desktop, icon, subplayerplay, mnurecordstream, messages,
                             volume, recorder, streamlist, folder.path()}};
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

TEST_F(PlaybackTest, WaitsUntilMoreThanThreeQuartersAreThere) {
  fake.downloads = {100, 755, 756};
  fake.decoded = 0;
  startUntil("ChannelPlay");
  EXPECT_EQ(view.history("lblName"), (Texts{"stop", "buffering... 10%", "play"}));
}

TEST_F(PlaybackTest, CountsOnlyWhatIsNotYetDecoded) {
  fake.downloads = {900, 1000};
  fake.decoded = 250;
  fake.ends = {1000, 900};
  startUntil("ChannelPlay");
  EXPECT_EQ(view.history("lblName"), (Texts{"stop", "buffering... 65%", "play"}));
}

TEST_F(PlaybackTest, EndsQuietlyWhenTheLibraryLosesTheStream) {
  fake.ends = {1000, BASS_FILEPOS_ERROR};
  fake.downloads = {10};
  playback.startplayer(0);
  ASSERT_TRUE(view.waitFor("lblName", "buffering... 1%"));
  ASSERT_TRUE(view.waitFor("lblName", "stop"));
  playback.shutDown();
  EXPECT_EQ(fake.sync, nullptr);
  EXPECT_EQ(view.now("error"), "(never)");
  EXPECT_FALSE(playback.isActive());
}

TEST_F(PlaybackTest, ChoosesTheAddressByTheEntrysElement) {
  const std::pair<int, std::string> cases[] = {
      {1, "http://c/"}, {5, "http://b/"}, {4, ""}, {100, ""}};
  for (const auto& [entry, address] : cases) {
    startUntil("StreamCreateURL " + address + " ", entry);
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

TEST_F(PlaybackTest, StopsAStreamThatIsBeingOpened) {
  fake.open_hangs = true;
  startUntil("StreamCreateURL");
  playback.stopplayer();
  ASSERT_TRUE(fake.waitFor("StreamFree 77"));
  EXPECT_EQ(view.now("lblName"), "stop");
  EXPECT_EQ(view.now("error"), "(never)");
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

TEST_F(PlaybackTest, FreesTheOldStreamBeforeTheNext) {
  startUntil("ChannelPlay");
  while (desktop.beeps > 0 || fake.calls().size() < 6) {
    desktop.beeps = 0;
    playback.startplayer(1);  // beeps until the first worker has left
  }
  EXPECT_EQ(fake.calls()[4], "StreamFree 77");
  EXPECT_EQ(fake.calls()[5], "StreamCreateURL http://c/ 0,8388608,0");
}

TEST_F(PlaybackTest, ShowsStatusTextsAndLaterTitles) {
  startUntil("ChannelPlay");
  send("HTTP/1.0 200 OK");
  EXPECT_EQ(view.now("lblBPS"), "HTTP/1.0 200 OK");
  const char tag[] = "StreamTitle='Next';";
  fake.sync(1, 77, reinterpret_cast<uintptr_t>(tag), 0);
  EXPECT_EQ(view.now("lblSong"), "Next");
  fake.sync(1, 77, 0, 0);
  EXPECT_EQ(view.now("lblSong"), "Next");
}

TEST_F(PlaybackTest, ShowsTheBitrateAgainWhenALostConnectionIsBack) {
  fake.icy_headers = std::string("icy-br:128\0", 11);
  startUntil("ChannelPlay");
  for (const char* text : {"reconnecting...", "HTTP/1.0 503 Full", "ICY 200 OK"}) send(text);
  const Texts shown = view.history("lblBPS");
  ASSERT_GE(shown.size(), 4U);
  EXPECT_EQ(Texts(shown.end() - 4, shown.end()),
            (Texts{"reconnecting...", "HTTP/1.0 503 Full", "ICY 200 OK", "bitrate: 128"}));
}

TEST_F(PlaybackTest, ShowsThatAStreamHasEnded) {
  startUntil("ChannelPlay");
  ASSERT_TRUE(playback.isActive());
  fake.download(nullptr, 0, 0);
  ASSERT_TRUE(view.waitFor("lblName", "stop"));
  EXPECT_FALSE(playback.isActive());
  // The end of what is being replaced says nothing of the next.
  fake.open_hangs = true;
  do {
    desktop.beeps = 0;
    playback.startplayer(1);
  } while (desktop.beeps > 0);
  ASSERT_TRUE(fake.waitFor("StreamCreateURL http://c/"));
  fake.download(nullptr, 0, 0);
  EXPECT_TRUE(playback.isActive());
}

TEST_F(PlaybackTest, RepeatsAStopThatCameBeforeTheLibraryKnewOfTheStream) {
  fake.open_hangs = true;
  startUntil("StreamCreateURL");
  playback.stopplayer();
  const auto stops = [&] {
    const Texts calls = fake.calls();
    return std::count_if(calls.begin(), calls.end(),
                         [](const std::string& call) { return call.starts_with("ChannelStop"); });
  };
  EXPECT_EQ(stops(), 1);
  send("connecting...");
  EXPECT_EQ(stops(), 2);
  EXPECT_EQ(view.history("lblBPS").back(), "");
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
