#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/captions.h"
#include "base/unique_handle_win.h"
#include "dialogs/dialog_ids.h"
#include "directory/own_lists.h"
#include "window/control_hook.h"
#include "window/modal.h"

namespace dialogs {

/// The window `editfavs`: takes entries out of a list and changes their order.
/// User-interface thread.
class EditFavs final : public window::Modal, private window::ControlHook {
 public:
  /// `owner` is disabled while the window is open; the title says which list it is.
  EditFavs(const app::Captions& captions, HWND owner, const std::string& title,
           std::vector<directory::OwnEntry> entries);
  ~EditFavs() override;

  /// Waits for the user: what is left, in its new order, or nothing after Cancel and
  /// when the program ends.
  std::optional<std::vector<directory::OwnEntry>> edit();

 private:
  std::optional<LRESULT> onMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  std::optional<LRESULT> onControl(HWND list, UINT message, WPARAM wparam, LPARAM lparam) override;
  void onCommand(int id, int notification) override;
  void onDpiChanged() override { dress(); }
  void addControls(const app::Captions& captions);
  void fill();
  void dress();
  void layOut();

  void onNotify(const NMHDR& header);
  bool onKey(WPARAM key);
  void Command1_Click();
  void updateButtons();
  /// Swaps the row that has the focus with its neighbour.
  void move(int by);
  void remove(UINT state, UINT mask);

  [[nodiscard]] HWND list() const { return control(kIdListView1); }
  [[nodiscard]] int rows() const;
  [[nodiscard]] std::size_t entryOf(int row) const;

  const HWND owner_;
  const std::vector<directory::OwnEntry> entries_;  ///< a row's parameter is its place in here
  std::optional<std::vector<directory::OwnEntry>> answer_;
  int checked_ = 0;  ///< rows whose box is checked
  base::UniqueFont font_;
};

}  // namespace dialogs
