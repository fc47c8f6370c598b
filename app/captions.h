#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace app {

/// The texts of the windows' controls, by "form.control" or
/// "form.control(index)", e.g. "splash.Label1", "Form2.List2(0)"; a window's title
/// is "form.Caption", a list view's column (n) of the control. A window reads its
/// texts when it is made and again when they change. Menu captions live in the menu
/// tree. User-interface thread only.
class Captions {
 public:
  using Texts = std::map<std::string, std::string, std::less<>>;

  /// Starts with every built-in English text.
  Captions();

  /// Empty for a key that has no text.
  [[nodiscard]] const std::string& get(std::string_view key) const;
  void set(std::string_view key, std::string text);

  /// Called after each change with the key. One listener per window that is
  /// there; it must outlive this or be removed.
  using Listener = std::function<void(std::string_view key)>;
  int listen(Listener listener);
  void forget(int listener);

 private:
  Texts texts_;
  std::map<int, Listener> listeners_;
  int next_listener_ = 1;
};

/// Every built-in text, line breaks as CR LF.
[[nodiscard]] Captions::Texts englishCaptions();

/// The messages that are no control's caption. Parts of the program that show one
/// read it here.
struct Messages {
  std::string msgnotonline = "Not Online or Site unreachable";
  std::string msgnewsearch = "New Search";
  std::string msgstream = "Stream";
  std::string msgdelentry = "Delete this Entry?";
  std::string msgloading = "Loading Data for %t";
  std::string msgreloadabort = "Reload Aborted - Please Wait!";
  std::string msgplayerstatus;
  std::string reload = "Reload";  ///< closing entry of a genre's stations
};

}  // namespace app
