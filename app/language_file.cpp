#include "app/language_file.h"

#include <algorithm>

#include "base/text.h"

namespace app {
namespace {

constexpr std::string_view kFolder = "\\lang";
constexpr std::string_view kExtension = ".kesl";

std::string inFolder(std::string_view name) {
  return std::string(kFolder) + '\\' + std::string(name);
}

bool hasExtension(std::string_view name) {
  return name.size() > kExtension.size() &&
         base::equalsIgnoringCase(name.substr(name.size() - kExtension.size()), kExtension);
}

/// Names of the language files in a folder, sorted.
std::vector<std::string> languageFiles(const std::string& folder) {
  std::vector<std::string> names = base::filesIn(folder);
  std::erase_if(names,
                [](const auto& name) { return !hasExtension(name) || !isLanguageFile(name); });
  std::sort(names.begin(), names.end(),
            [](const auto& a, const auto& b) { return base::lowerCased(a) < base::lowerCased(b); });
  return names;
}

/// The data folder's file of this name.
std::optional<std::string> readOwn(const Paths& paths, std::string_view name) {
  if (!isLanguageFile(name)) return std::nullopt;
  return readLanguageFile(paths.inData(inFolder(name)));
}

}  // namespace

bool isLanguageLine(std::string_view line) {
  return line.size() > 1 && line.front() != '#' && line.front() != '\'';
}

std::string cleanline(std::string_view line) {
  const auto apostrophe = line.find('\'');
  line = line.substr(0, apostrophe != line.npos ? apostrophe : line.find('#'));
  std::string cleaned(base::trimBlanks(line));
  std::erase(cleaned, '\t');
  return cleaned;
}

bool isLanguageFile(std::string_view language) {
  return language.size() > 1 && language.find_first_of("\\/:") == language.npos;
}

LanguageEntries::LanguageEntries(std::string_view text)
    : lines_(text.substr(text.starts_with("\xEF\xBB\xBF") ? 3 : 0)) {}

bool LanguageEntries::next(std::string& key, std::string& text) {
  for (std::string_view line; lines_.next(line);) {
    if (!isLanguageLine(line) || line.size() > kLongestLanguageLine) continue;
    const std::string cleaned = cleanline(line);
    const auto [name, value] = base::splitFirst(cleaned, ':');
    if (!value) continue;
    key = name;
    text = base::oneLine(*value);
    return true;
  }
  return false;
}

std::optional<std::string> readLanguageFile(const std::string& path) {
  return base::readWhole(path, kLargestLanguageFile);
}

std::string withLineBreaks(std::string_view text) {
  std::string broken;
  for (const std::string_view line : base::split(text, "\\n")) broken.append(line).append("\r\n");
  broken.resize(broken.size() - 2);  // split() gives at least one piece
  return broken;
}

void copyShippedLanguages(const Paths& paths) {
  for (const auto& name : languageFiles(paths.program_folder + std::string(kFolder))) {
    const std::string own = paths.inData(inFolder(name));
    if (base::fileExists(own)) continue;
    base::makeFolder(paths.inData(kFolder));
    // One that cannot be copied is not offered; the built-in English always is.
    static_cast<void>(base::copyFile(paths.program_folder + inFolder(name), own));
  }
}

std::vector<Language> languages(const Paths& paths) {
  std::vector<Language> found{{std::string(kBuiltInKey), "English (Build in)"}};
  for (auto& name : languageFiles(paths.inData(kFolder))) {
    const auto file = readOwn(paths, name);
    LanguageEntries entries(file ? *file : std::string_view());
    for (std::string key, text; entries.next(key, text);) {
      if (key != "language") continue;
      found.push_back({std::move(name), std::move(text)});
      break;
    }
  }
  return found;
}

std::string readlangheader(const Paths& paths, std::string_view key) {
  const auto file = readOwn(paths, key);
  if (key == kBuiltInKey || !file) return "Please Restart the Program!";
  std::string label = "Author", author = "unknow";
  LanguageEntries entries(*file);
  for (std::string id, text; entries.next(id, text);) {
    if (id == "2009") label = text;
    if (id == "author") author = text;
  }
  return label + ": " + author;
}

std::optional<ChooserTexts> readChooserTexts(const Paths& paths, std::string_view key) {
  const auto file = readOwn(paths, key);
  if (!file) return std::nullopt;
  ChooserTexts texts;
  LanguageEntries entries(*file);
  for (std::string id, text; entries.next(id, text);) {
    if (id == "0002") texts.frame1 = text;
    if (id == "0003") texts.label1 = withLineBreaks(text);
    if (id == "0004") texts.frame2 = text;
  }
  return texts;
}

}  // namespace app
