#pragma once

#include <optional>
#include <set>
#include <string>

#include "app/captions.h"
#include "app/desktop.h"
#include "app/hosts.h"
#include "dialogs/skinned_form_win.h"
#include "window/modal.h"

namespace dialogs {

/// The about box `Form3`. Its links and the update check open pages in the browser and
/// read nothing back. User-interface thread.
class Form3 final : public window::Modal, private SkinnedForm {
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
  std::optional<LRESULT> onControl(HWND control, UINT message, WPARAM wparam,
                                   LPARAM lparam) override;
  void addLinks();
  void checkupdate();
  void openPage(const std::string& address);
  void layOut() override;
  int placeLinks(int top);
  void placeButtons(int top);
  [[nodiscard]] int buttonsWidth() const;
  [[nodiscard]] int width() const;
  [[nodiscard]] COLORREF labelColour(int id) const override;
  void drawButton(const DRAWITEMSTRUCT& item) const override;
  void drawLink(const DRAWITEMSTRUCT& item) const;
  void restoreButtons();

  const app::Hosts& hosts_;
  app::Desktop& desktop_;
  const HWND owner_;
  std::set<int> pressed_;  ///< buttons that show their pressed picture
  base::UniqueFont link_font_;
};

}  // namespace dialogs
