// Whatever a language file says, every text is one line of bounded length, no menu
// entry is lost, and reading the file once more changes nothing.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "app/language_file.h"
#include "app/language_loader.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

struct Program {
  menu::MenuTree tree;
  app::Captions captions;
  app::Messages messages;

  void load(std::string_view file) {
    app::LanguageEntries entries(file);
    for (std::string key, text; entries.next(key, text);) {
      require(key.find(':') == key.npos && text.size() < app::kLongestLanguageLine);
      require(text.find_first_of(std::string_view("\r\n\t\0'", 5)) == text.npos);
      app::replaceText(key, text, {tree, captions, messages});
    }
  }

  std::vector<std::string> menus() const {
    using Kind = menu::Popup::Kind;
    std::vector<std::string> labels;
    for (const Kind kind :
         {Kind::mainmenu, Kind::genremenu, Kind::mnuplayer, Kind::mnubitrate, Kind::subfavs}) {
      for (const auto& line : tree.lines({kind})) labels.push_back(line.item->Caption);
    }
    return labels;
  }
};

auto separators(const std::vector<std::string>& labels) {
  return std::count(labels.begin(), labels.end(), "-");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view file(reinterpret_cast<const char*>(data), size);
  Program program;
  const auto english = program.menus();
  program.load(file);
  const auto once = program.menus();
  require(once.size() == english.size() && separators(once) == separators(english));
  program.load(file);
  require(program.menus() == once);
  return 0;
}
