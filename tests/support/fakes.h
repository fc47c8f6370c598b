#pragma once

#include <algorithm>
#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "app/desktop.h"
#include "app/tray_icon.h"
#include "base/files.h"
#include "directory/transfer.h"
#include "tests/support/temporary_folder.h"
#include "tray/menu_actions.h"

/// Answers in the order put down; remembers what was asked. What `while_waiting`
/// does happens inside the next get(), as a click during a transfer would; a
/// get() from there supersedes the waiting one.
class FakeTransfer final : public directory::Transfer {
 public:
  using Outcome = directory::TransferResult::Outcome;

  std::vector<std::string> requests;
  std::deque<directory::TransferResult> answers;
  std::function<void()> while_waiting;

  void answer(std::string body) { answers.push_back({Outcome::completed, std::move(body)}); }
  void answer(Outcome outcome) { answers.push_back({outcome, {}}); }

  directory::TransferResult get(std::string_view url) override {
    requests.emplace_back(url);
    const std::size_t request = requests.size();
    if (while_waiting) std::exchange(while_waiting, nullptr)();
    if (shut_down_) return {Outcome::ended, {}};
    if (request != requests.size()) return {Outcome::superseded, {}};
    if (answers.empty()) return {};
    auto result = std::move(answers.front());
    answers.pop_front();
    return result;
  }
  void shutDown() override { shut_down_ = true; }

 private:
  bool shut_down_ = false;
};

class FakeDesktop final : public app::Desktop {
 public:
  std::vector<std::string> messages;
  std::vector<std::string> opened;
  std::string dangerous;             ///< the one extension the system warns of
  std::function<void()> on_message;  ///< while the next message box is open

  void messageBox(std::string_view text, std::string_view, Icon) override {
    messages.emplace_back(text);
    if (on_message) std::exchange(on_message, nullptr)();
  }
  void shellopen(std::string_view target) override { opened.emplace_back(target); }
  bool isDangerousExtension(std::string_view extension) override { return extension == dangerous; }
  void beep() override {}
};

class FakeTrayIcon final : public app::TrayIcon {
 public:
  bool working = false;
  std::string caption = "Kestrel";

  void workicon() override { working = true; }
  void normalicon() override { working = false; }
  void setCaption(std::string_view text) override { caption = text; }
};

class FakeActions final : public tray::MenuActions {
 public:
  std::vector<std::string> calls;
  std::function<void()> searching;  ///< while the search dialog is open
  bool asking = false;              ///< another dialog is open, so that it does not

  void startplayer(int index) override { calls.push_back("start " + std::to_string(index)); }
  void stopplayer() override { calls.emplace_back("stop"); }
  void mnuplayerwindow_Click() override { calls.emplace_back("window"); }
  void mnuplayervolume_Click() override { calls.emplace_back("volume"); }
  void mnurecordstream_Click() override { calls.emplace_back("record"); }
  void lbstation(std::string_view caption) override {
    calls.push_back("station " + std::string(caption));
  }
  void mgenreall_Click() override { calls.emplace_back("reload all"); }
  void editfavs() override { calls.emplace_back("organiser"); }
  bool searchform() override {
    calls.emplace_back("search");
    if (asking) return false;
    if (searching) std::exchange(searching, nullptr)();
    return true;
  }
  void mnusetup_Click() override { calls.emplace_back("setup"); }
  void mnuabout_Click() override { calls.emplace_back("about"); }
  void mnuquit_Click() override { calls.emplace_back("quit"); }
};

/// The path as the standard library takes it.
inline std::filesystem::path nativePath(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

/// Straight into the file, whose folder is made as well.
inline void putFile(const std::string& path, std::string_view contents) {
  std::filesystem::create_directories(nativePath(path).parent_path());
  std::ofstream file;
  file.exceptions(std::ios::failbit | std::ios::badbit);
  file.open(nativePath(path), std::ios::binary);
  file << contents;
}

inline std::string fileText(const std::string& path) {
  return base::readWhole(path).value_or("(no file)");
}
