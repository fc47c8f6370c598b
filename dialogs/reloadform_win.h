#pragma once

#include <functional>
#include <optional>
#include <string>

#include "app/captions.h"
#include "dialogs/small_form_win.h"
#include "directory/reload.h"
#include "player/control_hook_win.h"
#include "window/window.h"

namespace dialogs {

/// The window `reloadform`: how far a reload of all genres is, and its Cancel. It comes
/// to the foreground when it opens and never again by itself. User-interface thread.
class ReloadForm final : public window::Window,
                         public directory::ReloadView,
                         private player::ControlHook {
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
  std::optional<LRESULT> onControl(HWND bar, UINT message, WPARAM wparam, LPARAM lparam) override;
  void onDpiChanged() override { dress(); }

  /// New texts, colours and fonts, and each control at its place.
  void dress();
  void layOut();
  void onCancel();
  void onPaint();
  void paintBar(HWND bar) const;
  LRESULT labelColours(HDC dc, HWND label) const;
  [[nodiscard]] bool offScreen() const;
  [[nodiscard]] HWND control(int id) const { return GetDlgItem(handle(), id); }
  void write(int id, const std::string& text);

  const app::Captions& captions_;
  const app::Messages& messages_;
  std::function<void()> cancel_;
  std::optional<SmallForm> look_;  ///< made when the window first shows
};

}  // namespace dialogs
