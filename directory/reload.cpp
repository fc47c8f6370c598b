#include "directory/reload.h"

#include <string_view>

namespace directory {
namespace {

std::string withGenre(std::string text, const std::string& genre) {
  constexpr std::string_view kPlace = "%t";
  for (auto at = text.find(kPlace); at != text.npos; at = text.find(kPlace, at + genre.size())) {
    text.replace(at, kPlace.size(), genre);
  }
  return text;
}

}  // namespace

void Reload::reloadall() {
  if (ended_) return;
  const unsigned turn = ++turn_;
  abort_ = false;
  working();
  if (parts_.settings.showreloadallwindow == 1) parts_.reloadform.show();

  for (int genre = 0; genre < menu::kSearchGenre; ++genre) {
    if (!reloadfunc(genre) || overtaken(turn)) break;
  }
  parts_.lists.finishCaches();
  if (overtaken(turn)) return;
  parts_.reloadform.hide();
  parts_.icon.setCaption("Kestrel");
  parts_.icon.normalicon();
}

bool Reload::reloadfunc(int genre) {
  if (!parts_.tree.mgenre[genre].Visible) return true;
  const unsigned turn = turn_;
  while (!abort_ && !overtaken(turn)) {
    parts_.reloadform.progress(
        withGenre(parts_.messages.msgloading, parts_.tree.mgenre[genre].Caption),
        visibleGenres(genre), visibleGenres(menu::kSearchGenre));
    parts_.icon.setCaption("Loading Data");  // each answer has set it back
    const auto answer = parts_.query.refresh(genre, Query::Mode::reload, {});
    if (answer != Query::Answer::superseded) return answer != Query::Answer::failed;
    if (parts_.query.hasEnded()) return false;
    if (!overtaken(turn)) working();  // what came in between has set the icon back
  }
  return true;
}

void Reload::working() {
  parts_.icon.setCaption("Loading Data");
  parts_.icon.workicon();
}

int Reload::visibleGenres(int before) const {
  int count = 0;
  for (int i = 0; i < before; ++i) count += parts_.tree.mgenre[i].Visible ? 1 : 0;
  return count;
}

}  // namespace directory
