#pragma once

#include <string>
#include <vector>

#include "app/captions.h"
#include "app/language_file.h"
#include "app/paths.h"
#include "base/unique_handle_win.h"
#include "window/modal.h"

namespace dialogs {

/// The language chooser `Form4` of the first start. Its texts follow the choice at
/// once. User-interface thread.
class Form4 final : public window::Modal {
 public:
  /// `language` is the setting that it writes; all outlives this.
  Form4(const app::Captions& captions, const app::Paths& paths, std::string& language);
  ~Form4() override;

  /// Returns when the user has confirmed or closed it.
  void open();

 private:
  void onCommand(int id, int notification) override;
  void onDpiChanged() override { dress(); }
  void ic1_Click();
  [[nodiscard]] const std::string& key() const;
  void showTexts(const app::ChooserTexts& texts);
  void dress();
  void layOut();
  [[nodiscard]] int hintHeight(int width) const;

  const app::Captions& captions_;
  const app::Paths& paths_;
  std::string& language_;
  const std::vector<app::Language> languages_;
  base::UniqueFont font_;
  base::UniqueFont heading_font_;
  base::UniqueIcon icon_;
};

}  // namespace dialogs
