#pragma once

#include <optional>
#include <string_view>

#include "app/captions.h"
#include "base/unique_handle_win.h"
#include "directory/own_lists.h"
#include "window/modal.h"

namespace dialogs {

/// Asks for the title and the stream address of an own entry. OK can be pressed while
/// both have text. User-interface thread.
class EntryForm : public window::Modal {
 public:
  ~EntryForm() override;

  /// Waits for the user: the entry, or nothing after Cancel and when the program ends.
  std::optional<directory::OwnEntry> ask();

 protected:
  /// `form` is its name among the captions; `owner` is disabled while it asks.
  EntryForm(const app::Captions& captions, std::string_view form, HWND owner,
            const directory::OwnEntry& entry);

 private:
  void onCommand(int id, int notification) override;
  void onDpiChanged() override { dress(); }
  void dress();
  void layOut();
  void updateOk();
  [[nodiscard]] directory::OwnEntry typed() const;

  const HWND owner_;
  std::optional<directory::OwnEntry> answer_;
  base::UniqueFont font_;
};

/// "Add Own Entry".
class Form5 final : public EntryForm {
 public:
  Form5(const app::Captions& captions, HWND owner) : EntryForm(captions, "Form5", owner, {}) {}
};

/// "Edit Entry".
class Form6 final : public EntryForm {
 public:
  Form6(const app::Captions& captions, HWND owner, const directory::OwnEntry& entry)
      : EntryForm(captions, "Form6", owner, entry) {}
};

}  // namespace dialogs
