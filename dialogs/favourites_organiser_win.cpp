#include "dialogs/favourites_organiser_win.h"

#include <commctrl.h>

#include <algorithm>
#include <utility>

#include "base/utf.h"
#include "dialogs/dialog_ids.h"
#include "res/resource.h"
#include "window/check_images.h"
#include "window/font.h"
#include "window/form_layout.h"
#include "window/mnemonics.h"

namespace dialogs {
namespace {

// Sizes in units of 1/96 inch.
constexpr SIZE kSize{440, 380};
constexpr int kLeastHeight = 240;
constexpr int kMargin = 14;
constexpr int kGap = 8;

constexpr DWORD kStyle =
    WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_MAXIMIZEBOX | WS_CLIPCHILDREN;

constexpr UINT kCheckBox = 0x2000;  // state image 2: checked

void setState(HWND list, int row, UINT state, UINT mask) {
  LVITEMW item{};
  item.state = state;
  item.stateMask = mask;
  SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
}

UINT stateOf(HWND list, int row, UINT mask) {
  return static_cast<UINT>(
      SendMessageW(list, LVM_GETITEMSTATE, static_cast<WPARAM>(row), static_cast<LPARAM>(mask)));
}

int nextRow(HWND list, int after, UINT flags) {
  return static_cast<int>(
      SendMessageW(list, LVM_GETNEXTITEM, static_cast<WPARAM>(after), static_cast<LPARAM>(flags)));
}

bool isPressed(int key) {
  return GetKeyState(key) < 0;
}

}  // namespace

EditFavs::EditFavs(const app::Captions& captions, HWND owner, const std::string& title,
                   std::vector<directory::OwnEntry> entries)
    : owner_(owner), entries_(std::move(entries)) {
  create({.class_name = L"editfavs",
          .caption = title,
          .style = kStyle,
          .ex_style = WS_EX_CONTROLPARENT | WS_EX_APPWINDOW,
          .width = kSize.cx,
          .height = kSize.cy,
          .owner = owner,
          .icon = IDI_NORMAL});
  addControls(captions);
  fill();
  dress();
  updateButtons();
}

EditFavs::~EditFavs() {
  destroy();
}

std::optional<std::vector<directory::OwnEntry>> EditFavs::edit() {
  run(owner_, list());
  return std::move(answer_);
}

void EditFavs::addControls(const app::Captions& captions) {
  INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_LISTVIEW_CLASSES};
  InitCommonControlsEx(&classes);
  addControl(WC_LISTVIEWW, {}, LVS_REPORT | LVS_SHOWSELALWAYS | LVS_NOSORTHEADER | WS_TABSTOP,
             kIdListView1, WS_EX_CLIENTEDGE);
  hook(list());
  constexpr LPARAM kLook = LVS_EX_CHECKBOXES | LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER;
  SendMessageW(list(), LVM_SETEXTENDEDLISTVIEWSTYLE, 0, kLook);
  std::wstring header = base::toWide(captions.get("editfavs.ListView1(0)"));
  LVCOLUMNW column{};
  column.mask = LVCF_TEXT;
  column.pszText = header.data();
  SendMessageW(list(), LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
  addControl(WC_BUTTONW, window::Mnemonics().mark(captions.get("editfavs.Command1")), WS_TABSTOP,
             kIdCommand1);
  addControl(WC_BUTTONW, window::Mnemonics::plain(captions.get("editfavs.Command2")),
             BS_DEFPUSHBUTTON | WS_TABSTOP, IDOK);
  addControl(WC_BUTTONW, window::Mnemonics::plain(captions.get("editfavs.Command3")), WS_TABSTOP,
             IDCANCEL);
}

void EditFavs::fill() {
  SendMessageW(list(), WM_SETREDRAW, FALSE, 0);
  SendMessageW(list(), LVM_SETITEMCOUNT, entries_.size(), 0);
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    std::wstring title = base::toWide(entries_[i].title);
    LVITEMW item{};
    item.mask = LVIF_TEXT | LVIF_PARAM;
    item.iItem = static_cast<int>(i);
    item.pszText = title.data();
    item.lParam = static_cast<LPARAM>(i);
    SendMessageW(list(), LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
  }
  setState(list(), 0, LVIS_FOCUSED, LVIS_FOCUSED);
  SendMessageW(list(), WM_SETREDRAW, TRUE, 0);
}

void EditFavs::dress() {
  font_ = window::messageFont(dpi());
  window::setFont(handle(), font_.get());
  setCheckImages(list(), dpi());
  layOut();
}

void EditFavs::layOut() {
  const window::FormArea area(handle(), dpi());
  const int top = area.height - kMargin - window::kFormButton;
  const auto button = [&](int id) { return buttonWidth(control(id), font_.get(), dpi()); };
  const int cancel = area.width - kMargin - button(IDCANCEL);
  const int ok = cancel - kGap - button(IDOK);
  place(list(), kMargin, kMargin, area.width - 2 * kMargin, top - 2 * kMargin);
  place(control(kIdCommand1), kMargin, top, button(kIdCommand1), window::kFormButton);
  place(control(IDOK), ok, top, button(IDOK), window::kFormButton);
  place(control(IDCANCEL), cancel, top, button(IDCANCEL), window::kFormButton);
  RECT inside{};
  GetClientRect(list(), &inside);
  SendMessageW(list(), LVM_SETCOLUMNWIDTH, 0, inside.right);
}

std::optional<LRESULT> EditFavs::onMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_SIZE:
      if (font_) layOut();
      return 0;
    case WM_GETMINMAXINFO: {
      const SIZE least = dpi().frame({scale(kSize.cx), scale(kLeastHeight)}, kStyle, 0);
      reinterpret_cast<MINMAXINFO*>(lparam)->ptMinTrackSize = {least.cx, least.cy};
      return 0;
    }
    case WM_NOTIFY:
      return onNotify(*reinterpret_cast<const NMHDR*>(lparam)), 0;
    default:
      return Modal::onMessage(message, wparam, lparam);
  }
}

void EditFavs::onNotify(const NMHDR& header) {
  if (header.idFrom != kIdListView1 || header.code != LVN_ITEMCHANGED) return;
  const auto& change = reinterpret_cast<const NMLISTVIEW&>(header);
  if ((change.uChanged & LVIF_STATE) == 0) return;
  const auto checked = [](UINT state) {
    return (state & LVIS_STATEIMAGEMASK) == kCheckBox ? 1 : 0;
  };
  checked_ += checked(change.uNewState) - checked(change.uOldState);
  updateButtons();
}

std::optional<LRESULT> EditFavs::onControl(HWND, UINT message, WPARAM wparam, LPARAM) {
  const bool handled = (message == WM_KEYDOWN || message == WM_SYSKEYDOWN) && onKey(wparam);
  // A key with Alt goes on: unseen, Alt's release would open the window's menu.
  if (!handled || message == WM_SYSKEYDOWN) return std::nullopt;
  return 0;
}

bool EditFavs::onKey(WPARAM key) {
  const bool alt = isPressed(VK_MENU);
  const bool control_key = isPressed(VK_CONTROL);
  if (key == VK_DELETE) return Command1_Click(), true;
  if (key == 'A' && control_key && !alt)
    return setState(list(), -1, LVIS_SELECTED, LVIS_SELECTED), true;
  if (alt && (key == VK_UP || key == VK_DOWN)) return move(key == VK_UP ? -1 : 1), true;
  return false;
}

void EditFavs::onCommand(int id, int) {
  switch (id) {
    case kIdCommand1:
      return Command1_Click();
    case IDOK:
      answer_.emplace();
      for (int row = 0; row < rows(); ++row) answer_->push_back(entries_[entryOf(row)]);
      return end();
    case IDCANCEL:
      return end();
    default:
      return;
  }
}

void EditFavs::Command1_Click() {
  if (checked_ > 0) {
    remove(kCheckBox, LVIS_STATEIMAGEMASK);
    checked_ = 0;
  } else {
    remove(LVIS_SELECTED, LVIS_SELECTED);
  }
  updateButtons();
}

void EditFavs::remove(UINT state, UINT mask) {
  SendMessageW(list(), WM_SETREDRAW, FALSE, 0);
  const int focused = std::max(nextRow(list(), -1, LVNI_FOCUSED), 0);
  int above = 0;  // rows before the focused one that stay
  for (int row = rows() - 1; row >= 0; --row) {
    if (stateOf(list(), row, mask) == state) {
      SendMessageW(list(), LVM_DELETEITEM, static_cast<WPARAM>(row), 0);
    } else if (row < focused) {
      ++above;
    }
  }
  SendMessageW(list(), WM_SETREDRAW, TRUE, 0);
  // The next one is at hand for the next key.
  const int next = std::min(above, rows() - 1);
  if (next < 0) return;
  setState(list(), next, LVIS_FOCUSED | LVIS_SELECTED, LVIS_FOCUSED | LVIS_SELECTED);
  SendMessageW(list(), LVM_ENSUREVISIBLE, static_cast<WPARAM>(next), FALSE);
}

void EditFavs::updateButtons() {
  const bool any = checked_ > 0 || nextRow(list(), -1, LVNI_SELECTED) >= 0;
  const HWND button = control(kIdCommand1);
  if (!any && GetFocus() == button) SetFocus(list());
  EnableWindow(button, any ? TRUE : FALSE);
}

void EditFavs::move(int by) {
  const int from = nextRow(list(), -1, LVNI_FOCUSED);
  const int to = from + by;
  if (from < 0 || to < 0 || to >= rows()) return;
  const auto write = [this](int row, std::size_t entry, UINT state) {
    std::wstring title = base::toWide(entries_[entry].title);
    LVITEMW item{};
    item.mask = LVIF_TEXT | LVIF_PARAM | LVIF_STATE;
    item.iItem = row;
    item.pszText = title.data();
    item.lParam = static_cast<LPARAM>(entry);
    item.state = state;
    item.stateMask = LVIS_STATEIMAGEMASK;
    SendMessageW(list(), LVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
  };
  const std::size_t moved = entryOf(from);
  const UINT moved_state = stateOf(list(), from, LVIS_STATEIMAGEMASK);
  write(from, entryOf(to), stateOf(list(), to, LVIS_STATEIMAGEMASK));
  write(to, moved, moved_state);
  setState(list(), -1, 0, LVIS_SELECTED);
  setState(list(), to, LVIS_FOCUSED | LVIS_SELECTED, LVIS_FOCUSED | LVIS_SELECTED);
  SendMessageW(list(), LVM_ENSUREVISIBLE, static_cast<WPARAM>(to), FALSE);
}

int EditFavs::rows() const {
  return static_cast<int>(SendMessageW(list(), LVM_GETITEMCOUNT, 0, 0));
}

std::size_t EditFavs::entryOf(int row) const {
  LVITEMW item{};
  item.mask = LVIF_PARAM;
  item.iItem = row;
  SendMessageW(list(), LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
  return static_cast<std::size_t>(item.lParam);
}

}  // namespace dialogs
