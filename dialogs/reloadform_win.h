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
/// to the foreground when it opens and never again by itself. User-interface thread.
class ReloadForm final : public window::Window, public directory::ReloadView, private SkinnedForm {
 public:
  /// `cancel` runs once for each show() at most. Captions and messages outlive this.
  ReloadForm(const app::Captions& captions, const app::Messages& messages,
             std::function<void()> cancel);
  ~ReloadForm() override;

  void show() override;
  void hide() override { window::Window::hide(); }
  void progress(const std::string& status, int done, int genres) override;

 private:
  std::optional<LRESULT> onMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  std::optional<LRESULT> onControl(HWND control, UINT message, WPARAM wparam,
                                   LPARAM lparam) override;
  void onDpiChanged() override { dress(); }

  void readCaptions();
  void layOut() override;
  void onCancel();
  void paintBar(HWND bar) const;
  [[nodiscard]] COLORREF labelColour(int id) const override;
  [[nodiscard]] bool offScreen() const;
  [[nodiscard]] HWND control(int id) const { return GetDlgItem(handle(), id); }
  void write(int id, const std::string& text);

  const app::Captions& captions_;
  const app::Messages& messages_;
  std::function<void()> cancel_;
};

}  // namespace dialogs
