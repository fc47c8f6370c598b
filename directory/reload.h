#pragma once

#include <string>

#include "app/captions.h"
#include "app/settings.h"
#include "app/tray_icon.h"
#include "directory/query.h"
#include "menu/menu_tree.h"

namespace directory {

/// The progress window of a reload of all genres. User-interface thread.
class ReloadView {
 public:
  virtual ~ReloadView() = default;

  /// Fresh, whatever an earlier reload left on it, and on the screen.
  virtual void show() = 0;
  virtual void hide() = 0;
  /// What is being loaded now: number `done` + 1 of `genres`.
  virtual void progress(const std::string& status, int done, int genres) = 0;
};

/// What a Reload works with; all of it must outlive it.
struct ReloadParts {
  Query& query;
  StationLists& lists;
  ReloadView& reloadform;
  app::TrayIcon& icon;
  const menu::MenuTree& tree;
  const app::Settings& settings;
  const app::Messages& messages;
};

/// Asks the directory for all visible genres, one after the other. Messages are
/// dispatched meanwhile: what the user does then comes first, and the genre that
/// was waiting is asked for once more. User-interface thread.
class Reload {
 public:
  explicit Reload(const ReloadParts& parts) : parts_(parts) {}

  /// Returns when all is done or cancelled. A call from within another takes over
  /// from it.
  void reloadall();

  /// The genre that is being loaded is still finished; none after it begins.
  void cancel() { abort_ = true; }

  /// The program ends: nothing may follow.
  void shutDown() { ended_ = true; }

 private:
  /// False when the directory could not be reached: then none of the others is
  /// asked for, and the user has been told once.
  [[nodiscard]] bool reloadfunc(int genre);
  [[nodiscard]] bool overtaken(unsigned turn) const { return ended_ || turn != turn_; }
  void working();
  [[nodiscard]] int visibleGenres(int before) const;

  const ReloadParts parts_;
  bool abort_ = false;
  bool ended_ = false;
  unsigned turn_ = 0;  // counts calls of reloadall, so that an overtaken one knows
};

}  // namespace directory
