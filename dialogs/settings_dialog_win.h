#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "app/captions.h"
#include "app/language_file.h"
#include "app/paths.h"
#include "app/settings.h"
#include "app/tray_icon.h"
#include "base/unique_handle_win.h"
#include "dialogs/settings_rules.h"
#include "directory/station_lists.h"
#include "menu/menu_tree.h"
#include "window/modal.h"

namespace dialogs {

/// The settings dialog `Form2`. It shows the settings as they are when it is made and
/// changes nothing before OK. User-interface thread.
class Form2 final : public window::Modal {
 public:
  /// What it shows and changes; all of it outlives the dialog.
  struct Parts {
    const app::Captions& captions;
    const app::Messages& messages;
    const app::Paths& paths;
    app::Settings& settings;
    menu::MenuTree& tree;
    directory::StationLists& lists;
    app::TrayIcon& icon;
    std::function<void(const std::string& file)> loadlanguage;
  };

  /// `owner` is disabled while the dialog is open.
  Form2(const Parts& parts, HWND owner);
  ~Form2() override;

  /// Shows the dialog and returns when it is closed; after OK everything is applied.
  void open() { run(owner_, control_of_pages_); }

 private:
  std::optional<LRESULT> onMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  void onCommand(int id, int notification) override;
  void onDpiChanged() override { dress(); }

  void addControls();
  void fill();
  void fillLanguages();
  void fillMenus(int combo, const char* name, int choice);
  void showPage(int page);
  [[nodiscard]] SettingsForm form() const;
  void applyAndClose();
  void applyIcons();
  void complain(std::string_view about);

  // The controls' own rules.
  void onSelection(int id);
  void ic1_Click();
  void Combo_Click(int id);
  void selectGenres(bool selected);
  void browsePlayer();
  void browseIcon(int text);
  void validate(int text);
  void onSpin(int id, bool up);
  void spinHeld();
  [[nodiscard]] bool spin();

  // The own entries' page.
  void fillEntries();
  void insertRow(int row);
  void writeRow(int row);
  void newEntry();
  void removeEntry();
  void editEntry();
  void updateEntryButtons();
  void selectRow(int row);
  [[nodiscard]] int selectedRow() const;
  LRESULT onNotify(const NMHDR& header);

  // Places and fonts.
  void dress();
  void layOut();
  [[nodiscard]] int textWidth(int id) const;
  [[nodiscard]] int widest(std::initializer_list<int> ids) const;
  [[nodiscard]] int widestPageName() const;
  [[nodiscard]] int buttonsWidth(std::initializer_list<int> ids) const;
  [[nodiscard]] int pageWidth() const;
  void placeProgramPage(int left, int width);
  void placePlayerPage(int left, int width);
  void placeGenresPage(int left, int width);
  void placeOwnEntriesPage(int left, int width);
  void placeSystrayPage(int left, int width);
  void placeNumber(int label, int field, int up_down, int left, int top, int labels);
  void placeField(int id, int left, int top, int width);
  void placeButtons(std::initializer_list<int> ids, int left, int top);
  void placeAt(int id, int left, int top, int width, int height) const;

  [[nodiscard]] std::string text(int id) const;
  void setText(int id, std::string_view text);
  [[nodiscard]] bool checked(int id) const;
  void check(int id, bool on);

  const Parts parts_;
  const HWND owner_;
  HWND control_of_pages_ = nullptr;
  base::UniqueFont font_;
  const std::vector<app::Language> languages_;
  MouseButtons mouse_{-1, -1};
  bool startup_ = false;                 ///< starts with Windows, as the dialog found it
  std::string normal_icon_, work_icon_;  ///< chosen icon files; empty for none
  bool entries_readable_ = false;
  std::vector<directory::OwnEntry> entries_;  ///< one for each row

  /// The picture that is held down.
  struct HeldSpin {
    int text;
    Spin rule;
    HWND control;
  };
  HeldSpin held_{};
};

}  // namespace dialogs
