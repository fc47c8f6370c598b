#pragma once

#include <string>
#include <string_view>

namespace window {

/// Gives the captions of one window, or of one page of it, letters that Alt chooses
/// them by, each letter once. Captions are 8-bit and know no marks of their own: a
/// "&" in one is shown as such.
class Mnemonics {
 public:
  /// The caption for a control that shows the letter after a "&" underlined. It has
  /// none if all of its letters are taken.
  std::string mark(std::string_view caption);

  /// The caption for such a control without a letter.
  [[nodiscard]] static std::string plain(std::string_view caption);

 private:
  std::wstring taken_;  ///< in upper case
};

}  // namespace window
