#pragma once

#include <string>
#include <string_view>

namespace app {

/// What the program asks of the user's desktop. All of it runs on the
/// user-interface thread; texts are 8-bit (see app/text.h).
class Desktop {
 public:
  enum class Icon { none, exclamation, critical };

  virtual ~Desktop() = default;

  /// Modal message box with an OK button. An empty title stands for the
  /// program's name. Returns when the user has closed it.
  virtual void messageBox(std::string_view text, std::string_view title = {},
                          Icon icon = Icon::none) = 0;

  /// Hands a file, a web address or a whole command to the shell's "Open" verb,
  /// as one file argument without parameters, with the hourglass pointer
  /// meanwhile. Failures are not reported.
  virtual void shellopen(std::string_view target) = 0;

  /// The system's own judgement whether opening a file with this extension
  /// (".exe") would execute it.
  [[nodiscard]] virtual bool isDangerousExtension(std::string_view dotted_extension) = 0;

  virtual void beep() = 0;
};

}  // namespace app
