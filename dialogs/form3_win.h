#pragma once

#include <initializer_list>
#include <optional>
#include <string>

#include "app/captions.h"
#include "app/desktop.h"
#include "app/hosts.h"
#include "dialogs/small_form_win.h"
#include "window/modal.h"

namespace dialogs {

/// The about box `Form3`. Its links and the update check open pages in the browser and
/// read nothing back. User-interface thread.
class Form3 final : public window::Modal {
 public:
  /// `owner` is disabled while the box is open; everything outlives it.
  Form3(const app::Captions& captions, const app::Hosts& hosts, app::Desktop& desktop, HWND owner);
  ~Form3() override;

  /// Returns when it is closed.
  void open();

 private:
  std::optional<LRESULT> onMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  void onCommand(int id, int notification) override;
  void onDpiChanged() override { dress(); }
  void addLinks();
  void checkupdate();
  void openPage(const std::string& address);
  void nextControl(WPARAM where, bool is_handle);
  void dress();
  void layOut();
  int placeLinks(int top);
  void placeButtons(int top);
  [[nodiscard]] int buttonsWidth() const;
  [[nodiscard]] int width() const;
  void onPaint();
  void drawLink(const DRAWITEMSTRUCT& item) const;

  const app::Hosts& hosts_;
  app::Desktop& desktop_;
  const HWND owner_;
  std::optional<SmallForm> look_;
  window::UniqueFont link_font_;
};

}  // namespace dialogs
