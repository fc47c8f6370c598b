#include "dialogs/settings_dialog_win.h"

#include <array>

#include "base/files.h"
#include "base/utf.h"
#include "dialogs/settings_controls_win.h"
#include "dialogs/startup_shortcut_win.h"
#include "res/resource.h"
#include "window/file_chooser.h"
#include "window/form_layout.h"
#include "window/mnemonics.h"

namespace dialogs {
namespace {

using namespace form2;  // its ids stand in every line

constexpr int kMenus = 3;  // that a mouse button can open
constexpr std::string_view kEntriesNotSaved = "The own Entrys could not be saved!";
constexpr std::string_view kStartupNotChanged = "The Startup Folder could not be changed!";
constexpr std::string_view kIconNotSaved = "The Icon File could not be saved!";

LRESULT send(HWND control, UINT message, WPARAM wparam = 0, LPARAM lparam = 0) {
  return SendMessageW(control, message, wparam, lparam);
}

void addString(HWND control, UINT message, std::string_view text) {
  send(control, message, 0, reinterpret_cast<LPARAM>(base::toWide(text).c_str()));
}

std::string indexed(const char* name, int index) {
  return "Form2." + std::string(name) + "(" + std::to_string(index) + ")";
}

/// A control's caption as its window text.
std::string shown(const Control& item, const std::string& caption,
                  std::array<window::Mnemonics, kPages>& letters) {
  const std::wstring_view window_class = item.window_class;
  const bool is_label = window_class == WC_STATICW && (item.style & SS_NOPREFIX) == 0;
  if (window_class != WC_BUTTONW && !is_label) return caption;
  const bool is_group = !is_label && (item.style & BS_TYPEMASK) == BS_GROUPBOX;
  const bool has_letter = item.page != kAll && (!is_group || item.id == kFrame1);
  const std::string text = has_letter ? letters[static_cast<std::size_t>(item.page)].mark(caption)
                                      : window::Mnemonics::plain(caption);
  return is_group ? window::groupCaption(text) : text;
}

}  // namespace

Form2::Form2(const Parts& parts, HWND owner)
    : parts_(parts), owner_(owner), languages_(app::languages(parts.paths)) {
  create({.class_name = L"Form2",
          .caption = parts_.captions.get("Form2.Caption"),
          .style = WS_POPUP | WS_CAPTION | WS_SYSMENU,
          .ex_style = WS_EX_CONTROLPARENT | WS_EX_APPWINDOW,
          .owner = owner,
          .icon = IDI_NORMAL});
  addControls();
  fill();
  dress();
  showPage(kProgram);
}

Form2::~Form2() {
  destroy();
}

void Form2::addControls() {
  INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_LISTVIEW_CLASSES | ICC_UPDOWN_CLASS};
  InitCommonControlsEx(&classes);
  std::array<window::Mnemonics, kPages> letters;  // of each page
  for (const Control& item : kControls) {
    const std::string caption =
        item.caption == nullptr ? "" : parts_.captions.get(std::string("Form2.") + item.caption);
    addControl(item.window_class, shown(item, caption, letters), item.style, item.id,
               item.ex_style);
  }
  control_of_pages_ = control(kList2);
  for (const int id : {kCommand5, kCommand9, kCommand10}) setText(id, "...");
  for (const auto& [up_down, field] : {std::pair{kImage1_2, kText1}, {kImage4_3, kText2}}) {
    constexpr int kFar = 100;  // its own position never moves
    send(control(up_down), UDM_SETRANGE32, static_cast<WPARAM>(-kFar), kFar);
    send(control(up_down), UDM_SETBUDDY, reinterpret_cast<WPARAM>(control(field)));
  }
}

void Form2::fill() {
  const SettingsForm values = settingsForm(parts_.settings, parts_.tree);
  for (int page = 0; page < kPages; ++page) {
    addString(control(kList2), LB_ADDSTRING, parts_.captions.get(indexed("List2", page)));
  }
  startup_ = startsWithWindows();
  check(kCheck1, values.Check1);
  check(kCheck2, values.Check2);
  check(kCheck3, startup_);
  check(kCheck4, values.Check4);
  check(kCheck5, values.Check5);
  setText(kText1, values.Text1);
  setText(kText2, values.Text2);
  setText(kText3, values.Text3);
  if (values.Option1 >= 0) check(kOption1_0 + values.Option1, true);
  mouse_ = values.mouse;
  fillMenus(kCombo1, "Combo1", mouse_.left);
  fillMenus(kCombo2, "Combo2", mouse_.right);
  for (int i = 0; i < menu::kGenres; ++i) {
    addString(control(kList1), LB_ADDSTRING, parts_.tree.mgenre[i].Caption);
    const bool visible = values.List1[static_cast<std::size_t>(i)];
    send(control(kList1), LB_SETSEL, visible ? TRUE : FALSE, i);
  }
  send(control(kList1), LB_SETCARETINDEX, 0);
  send(control(kList1), LB_SETTOPINDEX, 0);
  fillLanguages();
  fillEntries();
}

void Form2::fillLanguages() {
  const std::string key = settingsForm(parts_.settings, parts_.tree).ic1;
  send(control(kIc1), CB_RESETCONTENT);
  int chosen = 0;
  for (std::size_t i = 0; i < languages_.size(); ++i) {
    addString(control(kIc1), CB_ADDSTRING, languages_[i].text);
    if (languages_[i].key == key) chosen = static_cast<int>(i);
  }
  send(control(kIc1), CB_SETCURSEL, static_cast<WPARAM>(chosen));
  setText(kLabel2, parts_.captions.get("Form2.Label2"));
}

void Form2::fillMenus(int combo, const char* name, int choice) {
  for (int i = 0; i < kMenus; ++i) {
    addString(control(combo), CB_ADDSTRING, parts_.captions.get(indexed(name, i)));
  }
  send(control(combo), CB_SETCURSEL, static_cast<WPARAM>(choice));
}

void Form2::showPage(int page) {
  send(control(kList2), LB_SETCURSEL, static_cast<WPARAM>(page));
  for (const Control& item : kControls) {
    if (item.page != kAll) ShowWindow(control(item.id), item.page == page ? SW_SHOW : SW_HIDE);
  }
  if (page != kOwnEntries) return;
  selectRow(-1);
  updateEntryButtons();
}

SettingsForm Form2::form() const {
  SettingsForm values;
  values.Check1 = checked(kCheck1);
  values.Check2 = checked(kCheck2);
  values.Check4 = checked(kCheck4);
  values.Check5 = checked(kCheck5);
  values.Text1 = text(kText1);
  values.Text2 = text(kText2);
  values.Text3 = text(kText3);
  for (int i = 0; i < 3; ++i) {
    if (checked(kOption1_0 + i)) values.Option1 = i;
  }
  const LRESULT language = send(control(kIc1), CB_GETCURSEL);
  values.ic1 = languages_[language < 0 ? 0 : static_cast<std::size_t>(language)].key;
  values.mouse = mouse_;
  for (int i = 0; i < menu::kGenres; ++i) {
    values.List1[static_cast<std::size_t>(i)] =
        send(control(kList1), LB_GETSEL, static_cast<WPARAM>(i)) > 0;
  }
  return values;
}

void Form2::applyAndClose() {
  applysettings(form(), parts_.settings, parts_.tree);
  if (app::isLanguageFile(parts_.settings.language)) {
    parts_.loadlanguage(parts_.settings.language);
  }
  const bool startup = checked(kCheck3);
  if (startup != startup_ && !setStartsWithWindows(startup)) complain(kStartupNotChanged);
  applyIcons();
  if (entries_readable_ && !parts_.lists.writeSpecials(entries_)) {
    complain(kEntriesNotSaved);
  }
  end();
}

void Form2::applyIcons() {
  if (normal_icon_.empty() && work_icon_.empty()) return;
  const auto copy = [this](const std::string& from, const char* to) {
    return from.empty() || base::copyFile(from, parts_.paths.inData(to));
  };
  // Both are tried before anything is said.
  const bool normal = copy(normal_icon_, "\\data\\kesnormal.ico");
  const bool work = copy(work_icon_, "\\data\\keswork.ico");
  parts_.icon.normalicon();
  if (!normal || !work) complain(kIconNotSaved);
}

std::optional<LRESULT> Form2::onMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_NOTIFY:
      return onNotify(*reinterpret_cast<const NMHDR*>(lparam));
    case WM_TIMER:
      return spinHeld(), 0;
    default:
      return Modal::onMessage(message, wparam, lparam);
  }
}

void Form2::onCommand(int id, int notification) {
  switch (id) {
    case IDOK:
      return applyAndClose();
    case IDCANCEL:
      return end();
    case kCommand1:
    case kCommand2:
      return selectGenres(id == kCommand1);
    case kCommand5:
      return browsePlayer();
    case kCommand6:
      return newEntry();
    case kCommand7:
      return removeEntry();
    case kCommand8:
      return editEntry();
    case kCommand9:
      return browseIcon(kText4);
    case kCommand10:
      return browseIcon(kText5);
    case kText1:
    case kText2:
      if (notification == EN_KILLFOCUS) validate(id);
      return;
    default:
      static_assert(LBN_SELCHANGE == CBN_SELCHANGE);
      if (notification == LBN_SELCHANGE) onSelection(id);
  }
}

void Form2::complain(std::string_view about) {
  MessageBoxW(handle(), base::toWide(about).c_str(), L"Kestrel", MB_OK | MB_ICONEXCLAMATION);
}

std::string Form2::text(int id) const {
  return base::toNarrow(window::windowText(control(id)));
}

void Form2::setText(int id, std::string_view text) {
  SetWindowTextW(control(id), base::toWide(text).c_str());
}

bool Form2::checked(int id) const {
  return send(control(id), BM_GETCHECK) == BST_CHECKED;
}

void Form2::check(int id, bool on) {
  send(control(id), BM_SETCHECK, on ? BST_CHECKED : BST_UNCHECKED);
}

}  // namespace dialogs
