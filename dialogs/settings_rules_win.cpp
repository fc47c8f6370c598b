// How the settings dialog's controls answer the user.
#include "dialogs/settings_controls_win.h"
#include "dialogs/settings_dialog_win.h"
#include "window/file_chooser.h"

namespace dialogs {
namespace {

using namespace form2;

constexpr UINT_PTR kSpinTimer = 1;
constexpr UINT kSpinEvery = 200;  // ms

constexpr std::string_view kBadIcon = "The Icon File ist not Correct!";

constexpr const char* kPrograms = "Executable Files (*.exe)|*.exe|All Files (*.*)|*.*";
constexpr const char* kIcons = "Icon Files (*.ico)|*.ico|All Files (*.*)|*.*";

}  // namespace

void Form2::onSelection(int id) {
  switch (id) {
    case kList2:
      return showPage(static_cast<int>(SendMessageW(control(kList2), LB_GETCURSEL, 0, 0)));
    case kIc1:
      return ic1_Click();
    case kCombo1:
    case kCombo2:
      return Combo_Click(id);
    default:
      return;
  }
}

void Form2::ic1_Click() {
  const LRESULT chosen = SendMessageW(control(kIc1), CB_GETCURSEL, 0, 0);
  if (chosen < 0) return;
  setText(kLabel2,
          app::readlangheader(parts_.paths, languages_[static_cast<std::size_t>(chosen)].key));
}

void Form2::Combo_Click(int id) {
  const auto choice = static_cast<int>(SendMessageW(control(id), CB_GETCURSEL, 0, 0));
  mouse_ = id == kCombo1 ? chooseLeft(mouse_, choice) : chooseRight(mouse_, choice);
  SendMessageW(control(kCombo1), CB_SETCURSEL, static_cast<WPARAM>(mouse_.left), 0);
  SendMessageW(control(kCombo2), CB_SETCURSEL, static_cast<WPARAM>(mouse_.right), 0);
}

void Form2::selectGenres(bool selected) {
  const HWND list = control(kList1);
  SendMessageW(list, LB_SETSEL, selected ? TRUE : FALSE, -1);
  SendMessageW(list, LB_SETCARETINDEX, 0, FALSE);
  InvalidateRect(list, nullptr, TRUE);
}

void Form2::browsePlayer() {
  if (const auto file = window::chooseFile(handle(), kPrograms, text(kText3)))
    setText(kText3, *file);
}

void Form2::browseIcon(int text_id) {
  std::string& chosen = text_id == kText4 ? normal_icon_ : work_icon_;
  const auto file = window::chooseFile(handle(), kIcons, chosen);
  if (!file) return;
  if (!window::isIconFile(*file)) return complain(kBadIcon);
  chosen = *file;
  setText(text_id, chosen);
}

void Form2::validate(int id) {
  const std::string stored =
      id == kText1 ? parts_.settings.maxentry : std::to_string(parts_.settings.maxchar);
  const std::string now = text(id);
  const std::string valid = validated(now, stored);
  if (valid != now) setText(id, valid);
}

void Form2::onSpin(int id, bool up) {
  const HWND up_down = control(id);
  const bool by_mouse = GetCapture() == up_down;
  if (by_mouse && held_.control == up_down) return;  // the timer sees to the rest
  held_ = id == kImage1_2 ? HeldSpin{kText1, up ? kImage1 : kImage2, up_down}
                          : HeldSpin{kText2, up ? kImage4 : kImage3, up_down};
  validate(held_.text);
  const bool goes_on = spin();
  if (!by_mouse) {
    held_ = {};
  } else if (goes_on) {
    SetTimer(handle(), kSpinTimer, kSpinEvery, nullptr);
  }
}

void Form2::spinHeld() {
  const bool held = held_.control != nullptr && GetCapture() == held_.control;
  if (held && spin()) return;
  KillTimer(handle(), kSpinTimer);
}

bool Form2::spin() {
  const auto next = spinStep(text(held_.text), held_.rule);
  if (!next) return false;
  setText(held_.text, *next);
  return spinGoesOn(*next, held_.rule);
}

LRESULT Form2::onNotify(const NMHDR& header) {
  switch (header.code) {
    case UDN_DELTAPOS:
      onSpin(static_cast<int>(header.idFrom), reinterpret_cast<const NMUPDOWN&>(header).iDelta > 0);
      return TRUE;  // the control's own number stays
    case NM_RELEASEDCAPTURE:
      KillTimer(handle(), kSpinTimer);
      held_ = {};
      return 0;
    case LVN_ITEMCHANGED:
      updateEntryButtons();
      return 0;
    case NM_DBLCLK:
      if (header.idFrom == kListView1) editEntry();
      return 0;
    case LVN_KEYDOWN:
      if (reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey == VK_DELETE) removeEntry();
      return 0;
    default:
      return 0;
  }
}

}  // namespace dialogs
