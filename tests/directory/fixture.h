#pragma once

#include <gtest/gtest.h>

#include "directory/query.h"
#include "tests/support/fakes.h"

namespace directory {

using Entries = std::vector<std::pair<std::string, std::string>>;

inline constexpr const char* kHost = "http://directory.kestrel.example";

// One row of a result page.
inline std::string row(const std::string& title, const std::string& number) {
  return "<tr><td><a href=\"/sbin/kestrel-playlist.pls?rn=" + number +
         "&file=filename.pls\"><img src=\"tune.gif\"></a></td>\n"
         "<td><b>[Rock]</b> <A target=\"_scurl\" href=\"http://station.example/\">" +
         title + "</a><br>Now Playing: <i>&amp;</i></td></tr>\n";
}

inline std::string url(const std::string& number) {
  return kHost + ("/sbin/kestrel-playlist.pls?rn=" + number + "&file=filename.pls");
}

inline Entries entries(const menu::MenuArray& menu) {
  Entries all;
  for (const auto& item : menu) {
    if (item.Visible) all.emplace_back(item.Caption, item.Tag);
  }
  return all;
}

// What lists and menus work with, empty, and the day on which they do.
class ListsTest : public testing::Test {
 protected:
  ListsTest() { base::makeFolder(paths_.inData("\\data")); }

  std::string data(const std::string& name) const { return paths_.inData("\\data\\" + name); }
  std::string programs(const std::string& name) const {
    return paths_.program_folder + "\\data\\" + name;
  }

  TestFolder folder_;
  app::Paths paths_{folder_.path(), folder_.path() + "\\program"};
  app::Settings settings_;
  app::Messages messages_;
  app::Hosts hosts_;
  menu::MenuTree tree_;
  FakeTransfer transfer_;
  FakeDesktop desktop_;
  FakeTrayIcon icon_;
  StationLists lists_{paths_, settings_, messages_, tree_, "20250615"};
};

class DirectoryTest : public ListsTest, private PlaylistLauncher {
 protected:
  std::string refused_extension_;
  Entries launched_;
  Query query_{
      {transfer_, desktop_, icon_, tree_, lists_, *this, paths_, settings_, messages_, hosts_}};

 private:
  bool refuses(std::string_view extension) override { return extension == refused_extension_; }
  void launch(std::string_view address, const std::string& file) override {
    launched_.emplace_back(address, fileText(file));
  }
};

}  // namespace directory
