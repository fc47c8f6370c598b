#include "tests/directory/fixture.h"
#include "tray/launch.h"
#include "tray/station_menus.h"

namespace tray {
namespace {

using Strings = std::vector<std::string>;

Strings captions(const menu::MenuTree& tree, const menu::Popup& popup) {
  Strings all;
  for (const menu::Line& line : tree.lines(popup)) {
    all.push_back(line.item->Caption + (line.submenu ? " >" : ""));
  }
  return all;
}

TEST(MenuTree, ASeparatorStandsOnlyBetweenWhatCanBeChosen) {
  menu::MenuTree tree;
  for (int i = 0; i < menu::kGenres; ++i) tree.mgenre[i].Visible = i == 16;
  EXPECT_EQ(captions(tree, {menu::Popup::Kind::genremenu}),
            (Strings{"The 80s >", "-", "Favorites >", "-", "Reload all"}));
  const menu::Line genre = tree.lines({menu::Popup::Kind::genremenu})[0];
  EXPECT_EQ(*genre.submenu, (menu::Popup{menu::Popup::Kind::stations, 16}));
  EXPECT_EQ(genre.click.control, menu::Control::mgenre);
  EXPECT_EQ(genre.click.index, 16);
  EXPECT_EQ(captions(tree, *genre.submenu), Strings{"Reload"});

  tree.mgenrespecial.Visible = tree.specialtrenner.Visible = true;
  tree.mgenre[16].Visible = false;
  EXPECT_EQ(captions(tree, {menu::Popup::Kind::genremenu}),
            (Strings{"Own >", "-", "Favorites >", "-", "Reload all"}));
}

TEST(Playlist, FindsTheAddresses) {
  const std::tuple<const char*, const char*, std::vector<std::string_view>> cases[] = {
      {"pls",
       "[playlist]\r\r\nFile1=http://a\r\r\nTitle1=My file radio\nLength1=-1",
       {"http://a", "My file radio"}},
      {"PLS", "FILE1=X?id=5\nfile2\nFile3=", {"X?id", ""}},
      {"m3u", "#EXTM3U\n\nx\nhttp://a=b\n# no", {"http://a=b"}},
      {"M3U", "ab\nabc", {"abc"}},
      {"asx", "File1=a\nhttp://a", {}},
  };
  for (const auto& [extension, text, urls] : cases) {
    EXPECT_EQ(playlistUrls(text, extension), urls) << text;
  }
}

class TrayTest : public directory::ListsTest {
 protected:
  TrayTest() {
    for (int genre : {1, 2}) {
      menu::MenuArray& menu = tree_.subgenre(genre);
      menu[0] = {"a", "http://h/a.pls"};
      menu.load() = {"b", "http://h/b.pls"};
      menu.load() = {"-", "-"};
      menu.load() = {"Reload", "reload"};
    }
  }

  static menu::Click station(int genre, int index) {
    return {menu::Control::subgenre, index, genre};
  }
  std::string saved(const char* extension) const {
    return paths_.inData(std::string("\\tmpdata.") + extension);
  }
  Strings checked() const {
    Strings all;
    for (int genre = 0; genre < menu::kGenres; ++genre) {
      for (int i = 0; i <= tree_.subgenre(genre).UBound(); ++i) {
        if (tree_.subgenre(genre)[i].Checked) {
          all.push_back(std::to_string(genre) + "." + std::to_string(i));
        }
      }
    }
    return all;
  }

  FakeActions actions_;
  Playlist playlist_{paths_, messages_, tree_};
  Launch launch_{settings_, desktop_, playlist_, actions_};
  directory::Query query_{
      {transfer_, desktop_, icon_, tree_, lists_, launch_, paths_, settings_, messages_, hosts_}};
  StationMenus menus_{tree_, query_, icon_, actions_};
};

TEST_F(TrayTest, APlaylistBecomesTheStreamListAndTheStreamMenu) {
  putFile(saved("pls"), "File1=http://a\nFile2=http://b");
  playlist_.playlisteinlesen(saved("pls"));
  EXPECT_EQ(playlist_.streamlist(), (Strings{"http://a", "http://b", ""}));
  EXPECT_EQ(captions(tree_, {menu::Popup::Kind::substream}), (Strings{"Stream 1", "Stream 2"}));
  EXPECT_TRUE(tree_.substream[0].Checked && tree_.subplayerstream.Visible);
  menus_.click({menu::Control::substream, 1});
  EXPECT_EQ(actions_.calls, Strings{"start 1"});

  putFile(saved("pls"), "nothing");
  playlist_.playlisteinlesen("");
  EXPECT_TRUE(playlist_.streamlist().empty());
  EXPECT_EQ(tree_.substream.UBound(), 0);
  EXPECT_TRUE(tree_.subplayerplay.Enabled);

  ASSERT_TRUE(base::removeFile(saved("pls")));
  playlist_.playlisteinlesen("");
  EXPECT_FALSE(tree_.subplayerplay.Enabled || tree_.subplayerstop.Enabled);
}

TEST_F(TrayTest, LaunchesTheWayTheSettingSays) {
  settings_.playerpath = "C:\\play.exe %1 -q %1";
  const std::string file = saved("pls");
  const std::string command = "C:\\play.exe \"" + file + "\" -q \"" + file + "\"";
  const std::tuple<std::int16_t, Strings, Strings> cases[] = {
      {0, {file}, {"station a"}},
      {1, {command}, {"station a"}},
      {2, {}, {"start 0", "station a"}},
      {3, {}, {"station a"}},
  };
  for (const auto& [player, opened, calls] : cases) {
    settings_.player = player;
    desktop_.opened.clear();
    actions_.calls.clear();
    transfer_.answer("File1=http://stream");
    menus_.click(station(1, 0));
    EXPECT_EQ(desktop_.opened, opened);
    EXPECT_EQ(actions_.calls, calls);
  }
  EXPECT_EQ(playlist_.streamlist(), (Strings{"http://stream", ""}));
}

TEST_F(TrayTest, NeverHandsTheSystemWhatItWouldExecute) {
  desktop_.dangerous = ".new";
  for (const char* extension : {"exe", "EXE", "Lnk", "hta", "new", "settingcontent-ms"}) {
    tree_.subgenre(1)[0].Tag = std::string("http://h/a.") + extension;
    desktop_.messages.clear();
    menus_.click(station(1, 0));
    EXPECT_EQ(desktop_.messages, Strings{"Can't Connect. Error in Datafile"}) << extension;
    EXPECT_FALSE(base::fileExists(saved(extension)));
  }
  EXPECT_TRUE(desktop_.opened.empty() && transfer_.requests.empty());

  // The mode changes to 0 while such a file is on its way to the user's command.
  settings_.player = 1;
  transfer_.answer("x");
  transfer_.while_waiting = [&] { settings_.player = 0; };
  menus_.click(station(1, 0));
  EXPECT_TRUE(desktop_.opened.empty());
}

TEST_F(TrayTest, OneStationIsCheckedExceptInHiddenGenresAlsoAfterAReload) {
  tree_.mgenre[2].Visible = false;
  tree_.subgenre(2)[0].Checked = true;
  tree_.subgenre(1)[0].Checked = true;
  tree_.subgenre(1)[1].Tag = "http://" + hosts_.directory + "/sbin/kestrel-playlist.pls";
  transfer_.answer("x");
  menus_.click(station(1, 1));
  EXPECT_EQ(checked(), (Strings{"1.1", "2.0"}));
  EXPECT_FALSE(icon_.working);
  EXPECT_EQ(icon_.caption, "Kestrel");

  transfer_.answer("/sbin/kestrel-playlist.pls?2\"><a>new</a>" +
                   std::string("/sbin/kestrel-playlist.pls?3\"><a>new</a>") +
                   "/sbin/kestrel-playlist.pls\"><a>b</a>");
  menus_.click(station(1, 3));
  EXPECT_NE(transfer_.requests.back().find("sgenre=Alternative&"), std::string::npos);
  EXPECT_EQ(tree_.subgenre(1)[0].Caption, "new");
  EXPECT_EQ(checked(), (Strings{"1.2", "2.0"}));
}

TEST_F(TrayTest, AddsTheSelectionWhateverWasClickedLast) {
  menus_.click({menu::Control::subfavs, 0});
  EXPECT_EQ(tree_.subfavs.UBound(), 2);
  menus_.click(station(1, 3));
  menus_.click({menu::Control::subfavs, 0});
  EXPECT_EQ(tree_.subfavs[3].Caption, "Reload");
  EXPECT_EQ(tree_.subfavs[3].Tag, "reload");

  // Such a favourite reloads the genre, and the favourites stay what they are.
  transfer_.answer("/sbin/kestrel-playlist.pls\"><a>new</a>");
  menus_.click({menu::Control::subfavs, 3});
  EXPECT_EQ(tree_.subfavs.UBound(), 3);
  EXPECT_EQ(tree_.subgenre(1)[0].Caption, "new");
}

TEST_F(TrayTest, GreyedOrVanishedEntriesDoNothing) {
  tree_.mnusetup.Enabled = false;
  tree_.mgenreall.Visible = false;
  const menu::Click clicks[] = {{menu::Control::subfavs, 2},
                                {menu::Control::subfavs, 9},
                                {menu::Control::subbit, 6},
                                {menu::Control::subbit, -1},
                                {menu::Control::mnusetup},
                                {menu::Control::mgenreall},
                                station(1, 2),
                                station(1, 4),
                                station(20, 0),
                                {menu::Control::substream, 1},
                                {menu::Control::mnurecordstream}};
  for (const menu::Click& click : clicks) menus_.click(click);
  EXPECT_TRUE(actions_.calls.empty() && transfer_.requests.empty());
  menus_.click({menu::Control::mnuquit});
  EXPECT_EQ(actions_.calls, Strings{"quit"});
}

// A click during a transfer, or while a message about it is open.
TEST_F(TrayTest, AnOvertakenStationIsNeitherPlayedNorChecked) {
  settings_.player = 2;
  transfer_.answer("File1=http://second");
  transfer_.while_waiting = [&] { menus_.click(station(2, 1)); };
  menus_.click(station(1, 0));
  EXPECT_EQ(checked(), Strings{"2.1"});
  EXPECT_EQ(actions_.calls, (Strings{"start 0", "station b"}));
  EXPECT_EQ(playlist_.streamlist().front(), "http://second");
  EXPECT_TRUE(desktop_.messages.empty());
  EXPECT_FALSE(icon_.working);

  actions_.calls.clear();
  transfer_.answer(FakeTransfer::Outcome::failed);
  transfer_.answer("File1=http://third");
  desktop_.on_message = [&] { menus_.click(station(2, 0)); };
  menus_.click(station(1, 0));
  EXPECT_EQ(checked(), Strings{"2.0"});
  EXPECT_EQ(actions_.calls, (Strings{"start 0", "station a"}));
}

TEST_F(TrayTest, AStationThatMovesWhileItsPlaylistComesIsStillTheOneChecked) {
  tree_.subspecial[0] = {"gone", "http://h/gone.pls"};
  tree_.subspecial.load() = {"own", "http://h/own.pls"};
  transfer_.answer("x");
  transfer_.while_waiting = [&] {
    tree_.subspecial.unloadAbove(0);
    tree_.subspecial[0] = {"own", "http://h/own.pls"};
  };
  menus_.click({menu::Control::subspecial, 1});
  EXPECT_TRUE(tree_.subspecial[0].Checked);
}

TEST_F(TrayTest, QuittingDuringATransferSaysNothing) {
  transfer_.while_waiting = [&] { transfer_.shutDown(); };
  menus_.click(station(1, 3));
  menus_.click(station(1, 0));
  EXPECT_TRUE(desktop_.messages.empty() && actions_.calls.empty() && checked().empty());
}

}  // namespace
}  // namespace tray
