#pragma once

#include <optional>
#include <string>

#include "app/captions.h"
#include "dialogs/skinned_form_win.h"
#include "window/modal.h"

namespace dialogs {

/// The window `searchform`: asks for the words of a search. User-interface thread.
class SearchForm final : public window::Modal, private SkinnedForm {
 public:
  /// `owner` is disabled while the window asks. `words` stand in the box, selected.
  SearchForm(const app::Captions& captions, HWND owner, const std::string& words);
  ~SearchForm() override;

  /// Waits for the answer: the text as it was typed, or nothing after Cancel and when
  /// the program ends.
  std::optional<std::string> ask();

 private:
  std::optional<LRESULT> onMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  void onCommand(int id, int notification) override;
  void onDpiChanged() override { dress(); }
  void layOut() override;
  void paint(window::Canvas& canvas) const override;
  [[nodiscard]] RECT field() const;

  const HWND owner_;
  std::optional<std::string> answer_;
};

}  // namespace dialogs
