#include "program/program_win.h"

#include <windows.h>

#include <array>
#include <cstdio>
#include <string>
#include <utility>

#include "app/language_file.h"
#include "app/language_loader.h"
#include "base/files.h"
#include "dialogs/about_box_win.h"
#include "dialogs/favourites_organiser_win.h"
#include "dialogs/search_dialog_win.h"
#include "dialogs/settings_dialog_win.h"
#include "directory/own_lists.h"
#include "player/audio_setup.h"

namespace program {
namespace {

/// Today as "yyyymmdd".
std::string today() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "%04d%02d%02d", now.wYear % 10000, now.wMonth % 100,
                now.wDay % 100);
  return text.data();
}

app::Settings readSettings(const app::Startup& startup, menu::MenuTree& tree) {
  app::Settings settings = startup.settings;
  app::ladesettings(startup.paths, settings, tree);
  return settings;
}

}  // namespace

Program::Program(const app::Startup& startup, app::Captions& captions)
    : captions_(captions),
      paths_(startup.paths),
      settings_(readSettings(startup, tree_)),
      hosts_(app::readHosts(paths_.program_folder + "\\hosts.cfg")),
      form1_(tree_, form1Events()),
      icon_(form1_.handle(), paths_.datapath, desktop_),
      volform_(volume_, tree_),
      frmNetRadio_({captions, desktop_, tree_, queue_, volume_}),
      reloadform_(captions, messages_, [this] { reload_.cancel(); }),
      lists_(paths_, settings_, messages_, tree_, today()),
      kesmessage_([this] {
        if (base::fileExists(paths_.inData("\\data\\special.dat"))) lists_.specialreloaded();
      }),
      playlist_(paths_, messages_, tree_),
      launch_(settings_, desktop_, playlist_, *this),
      recorder_(paths_.program_folder),
      playback_({library_, frmNetRadio_, desktop_, icon_, tree_.subplayerplay,
                 tree_.mnurecordstream, messages_, volume_, recorder_, playlist_.streamlist(),
                 paths_.datapath}),
      query_({transfer_, desktop_, icon_, tree_, lists_, launch_, paths_, settings_, messages_,
              hosts_}),
      reload_({query_, lists_, reloadform_, icon_, tree_, settings_, messages_}),
      menus_(tree_, query_, icon_, *this) {
  volume_.set(settings_.volume);
  frmNetRadio_.connect(playerActions());
  placePlayer();
  preloadforms();
  app::loadlanguage(settings_.language, paths_, {tree_, captions, messages_});
  lists_.loadAtStart();
}

Program::~Program() {
  shutDown();      // where somebody else has ended the message loop
  queue_.close();  // labels that playback's end still writes have nowhere to go
}

bool Program::start() {
  icon_.addtrayicon();
  ready_ =
      player::initaudio({library_, desktop_, frmNetRadio_, paths_.program_folder, form1_.handle(),
                         player::loadAudioLibrary, [this] { playlist_.playlisteinlesen({}); }});
  if (ready_ && settings_.reloadonstartup == 1) {
    queue_.post([this] { mgenreall_Click(); });  // once the caller's splash window has gone
  }
  return ready_;
}

void Program::lbstation(std::string_view caption) {
  frmNetRadio_.lbstation(std::string(caption));
}

void Program::mnusetup_Click() {
  if (asking()) return;
  app::copyShippedLanguages(paths_);
  const auto load = [this](const std::string& file) {
    app::loadlanguage(file, paths_, {tree_, captions_, messages_});
  };
  dialogs::Form2({captions_, messages_, paths_, settings_, tree_, lists_, icon_, load},
                 form1_.handle())
      .open();
}

void Program::mnuabout_Click() {
  if (asking()) return;
  dialogs::Form3(captions_, hosts_, desktop_, form1_.handle()).open();
}

void Program::editfavs() {
  if (asking()) return;
  constexpr auto kList = directory::OwnList::favourites;
  const auto before = directory::organise(tree_, kList);
  const auto after =
      dialogs::EditFavs(captions_, form1_.handle(), captions_.get("editfavs.Caption"), before)
          .edit();
  if (after) directory::reorganise(tree_, kList, before, *after);
}

bool Program::searchform() {
  if (asking()) return false;
  const auto words = dialogs::SearchForm(captions_, form1_.handle(), search_words_).ask();
  if (words) search_words_ = *words;
  query_.setSearchText(words.value_or("-"));
  return true;
}

/// A dialog or message box waits for its answer; it is brought to the front.
bool Program::asking() const {
  if (IsWindowEnabled(form1_.handle()) != FALSE) return false;
  tray::Form1::showWaitingDialog();
  return true;
}

tray::Form1Events Program::form1Events() {
  return {
      .mouse_action =
          [this](bool left) { return left ? settings_.leftmouse : settings_.rightmouse; },
      .genre_opened = [this](int genre) { menus_.mgenre_Click(genre); },
      .clicked =
          [this](const menu::Click& click) {
            if (ready_) menus_.click(click);
          },
      .taskbar_created = [this] { icon_.restore(); },
      .shut_down = [this] { shutDown(); },
  };
}

player::PlayerActions Program::playerActions() {
  return {
      .startplayer = [this] { playback_.startplayer(0); },
      .stopplayer = [this] { playback_.stopplayer(); },
      .toggle = [this] { playback_.toggle(); },
      .recordstatus = [this](bool wanted) { playback_.recordstatus(wanted); },
  };
}

void Program::placePlayer() {
  if (settings_.playerwin_left) frmNetRadio_.setLeft(*settings_.playerwin_left);
  if (settings_.playerwin_top) frmNetRadio_.setTop(*settings_.playerwin_top);
}

void Program::preloadforms() {
  if (settings_.playerstart == 1) frmNetRadio_.showPlayer();
}

void Program::shutDown() {
  if (std::exchange(ended_, true)) return;
  PostQuitMessage(0);
  if (!ready_) return;  // asked for by a message box of the start: nothing has changed yet
  reload_.shutDown();
  transfer_.shutDown();  // one that waits ends, and its click changes nothing more
  playback_.shutDown();
  settings_.volume = static_cast<std::int16_t>(volume_.get());
  settings_.playerwin_left = frmNetRadio_.Left();
  settings_.playerwin_top = frmNetRadio_.Top();
  // What cannot be written leaves the old file whole; there is nobody left to ask.
  static_cast<void>(app::savesettings(paths_, settings_, tree_));
  static_cast<void>(lists_.writeAtEnd());
}

}  // namespace program
