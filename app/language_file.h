#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/paths.h"
#include "base/files.h"

/// Language files: one entry a line, "key:text". They come from translators and
/// from strangers, so nothing in one is an error; what makes no sense is skipped.
namespace app {

/// Larger files are not read, longer lines skipped: several hundred times, and ten
/// times, what a full translation needs.
inline constexpr std::size_t kLargestLanguageFile = std::size_t{1} << 20;
inline constexpr std::size_t kLongestLanguageLine = std::size_t{8} << 10;

/// Whether a line of a language file holds an entry: it is longer than one
/// character and no comment ("#" or "'" in front).
[[nodiscard]] bool isLanguageLine(std::string_view line);

/// The line without its trailing comment, without blanks around it and without
/// any tab. Only one comment mark is looked for: "'" if there is one, else "#".
[[nodiscard]] std::string cleanline(std::string_view line);

/// Whether a setting names a language file: neither "0" nor a single character,
/// and a plain file name.
[[nodiscard]] bool isLanguageFile(std::string_view language);

/// Takes the entries off the front of a language file's text, cleaned and split at
/// the first ":". A key without one has no text and is left out, and so is the mark
/// that some editors put before UTF-8 text.
class LanguageEntries {
 public:
  explicit LanguageEntries(std::string_view text);
  /// False at the end.
  [[nodiscard]] bool next(std::string& key, std::string& text);

 private:
  base::Lines lines_;
};

/// The file's text; nothing when it is missing or cannot be a language file.
[[nodiscard]] std::optional<std::string> readLanguageFile(const std::string& path);

/// With every "\n" of two characters as CR LF.
[[nodiscard]] std::string withLineBreaks(std::string_view text);

/// Key of the choosers' entry for the built-in English.
inline constexpr std::string_view kBuiltInKey = "build";

/// An entry of the choosers.
struct Language {
  std::string key;   ///< file name, or kBuiltInKey
  std::string text;  ///< as its speakers call it
};

/// Puts each language file of the program's folder that the user has not got into
/// the data folder, where the choosers look. Never overwrites.
void copyShippedLanguages(const Paths& paths);

/// What the choosers list: the built-in English, then the data folder's files that
/// tell their name, by file name.
[[nodiscard]] std::vector<Language> languages(const Paths& paths);

/// The settings dialog's author line for a chosen entry; asks for a new start when
/// it is the built-in English, which comes back in no other way.
[[nodiscard]] std::string readlangheader(const Paths& paths, std::string_view key);

/// Texts of the language chooser; what a file leaves out is nothing.
struct ChooserTexts {
  std::optional<std::string> frame1, label1, frame2;
};
/// Nothing when the data folder has no such file.
[[nodiscard]] std::optional<ChooserTexts> readChooserTexts(const Paths& paths,
                                                           std::string_view key);

}  // namespace app
