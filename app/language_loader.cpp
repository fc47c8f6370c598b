#include "app/language_loader.h"

#include "app/language_file.h"
#include "base/files.h"
#include "base/text.h"

namespace app {

void loadlanguage(std::string_view filename, const Paths& paths, const Texts& texts) {
  if (!isLanguageFile(filename)) return;
  const std::string path = paths.find("\\lang\\" + std::string(filename));
  const auto file = path.empty() ? std::nullopt : readLanguageFile(path);
  LanguageEntries entries(file ? *file : std::string_view());
  for (std::string id, text; entries.next(id, text);) replaceText(id, text, texts);
  readlangauthor(filename, paths, texts.captions);
}

void readlangauthor(std::string_view language, const Paths& paths, Captions& captions) {
  if (!isLanguageFile(language)) return;
  const auto file = readLanguageFile(paths.inData("\\lang\\" + std::string(language)));
  if (!file) return;
  std::string label, langauthor;
  LanguageEntries entries(*file);
  for (std::string key, text; entries.next(key, text);) {
    if (key == "2009") label = text;
    if (key == "author") langauthor = text;
  }
  captions.set("Form2.Label2", label + ": " + langauthor);
}

int splitclean(std::string_view text, std::string_view separator, std::vector<std::string>& parts) {
  parts.clear();
  if (text.empty()) return 0;
  if (text.size() > 1 && text.front() == '"' && text.back() == '"') {
    text = text.substr(1, text.size() - 2);
  }
  for (const std::string_view piece : base::split(text, separator)) {
    if (!piece.empty()) parts.emplace_back(base::trimBlanks(piece));
  }
  return static_cast<int>(parts.size());
}

}  // namespace app
