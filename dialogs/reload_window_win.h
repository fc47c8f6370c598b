#pragma once

#include <functional>
#include <optional>
#include <string>

#include "app/captions.h"
#include "dialogs/skinned_form_win.h"
#include "directory/reload.h"
#include "window/window.h"

namespace dialogs {

/// The window `reloadform`: how far a reload of all genres is, and its Cancel. It comes
/// to the foreground when it opens and never again by itself. The native window is made
/// when it is shown first. User-interface thread.
class ReloadForm final : public window::Window, public directory::ReloadView, private SkinnedForm {
 public:
  /// `cancel` runs once for each show() at most. Captions and messages outlive this.
  ReloadForm(app::Captions& captions, const app::Messages& messages, std::function<void()> cancel);
  ~ReloadForm() override;

  void show() override;
  void hide() override;
  void progress(const std::string& status, int done, int genres) override;

 private:
  struct Progress {
    std::string status;
    int done;
    int genres;
  };

  std::optional<LRESULT> onMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  std::optional<LRESULT> onControl(HWND control, UINT message, WPARAM wparam,
                                   LPARAM lparam) override;
  void onDpiChanged() override { dress(); }

  void make();
  void write(const Progress& progress);
  void readCaptions();
  void layOut() override;
  void onCancel();
  void paintBar(HWND bar) const;
  [[nodiscard]] COLORREF labelColour(int id) const override;
  [[nodiscard]] bool offScreen() const;
  [[nodiscard]] HWND control(int id) const { return GetDlgItem(handle(), id); }
  void write(int id, const std::string& text);

  app::Captions& captions_;
  const app::Messages& messages_;
  std::function<void()> cancel_;
  int listener_;
  std::optional<Progress> late_;  ///< what the pace timer is going to write
  ULONGLONG written_ = 0;         ///< tick count of the last progress that was
};

}  // namespace dialogs
