// The settings dialog's page of the user's own entries.
#include <algorithm>
#include <utility>

#include "base/utf.h"
#include "dialogs/entry_dialog_win.h"
#include "dialogs/settings_controls_win.h"
#include "dialogs/settings_dialog_win.h"

namespace dialogs {

using namespace form2;

void Form2::fillEntries() {
  const HWND list = control(kListView1);
  SendMessageW(list, LVM_SETEXTENDEDLISTVIEWSTYLE, 0, LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER);
  for (int i = 0; i < 2; ++i) {
    std::wstring title =
        base::toWide(parts_.captions.get("Form2.ListView1(" + std::to_string(i) + ")"));
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_SUBITEM;
    column.pszText = title.data();
    column.iSubItem = i;
    SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(i),
                 reinterpret_cast<LPARAM>(&column));
  }
  auto entries = parts_.lists.specials();
  entries_readable_ = entries.has_value();
  if (entries) entries_ = std::move(*entries);
  for (int row = 0; row < static_cast<int>(entries_.size()); ++row) insertRow(row);
  updateEntryButtons();
}

void Form2::insertRow(int row) {
  LVITEMW item{};
  item.iItem = row;
  SendMessageW(control(kListView1), LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
  writeRow(row);
}

void Form2::writeRow(int row) {
  const directory::OwnEntry& entry = entries_[static_cast<std::size_t>(row)];
  for (const auto& [column, content] : {std::pair{0, &entry.title}, {1, &entry.url}}) {
    std::wstring wide = base::toWide(*content);
    LVITEMW item{};
    item.iSubItem = column;
    item.pszText = wide.data();
    SendMessageW(control(kListView1), LVM_SETITEMTEXTW, static_cast<WPARAM>(row),
                 reinterpret_cast<LPARAM>(&item));
  }
}

void Form2::newEntry() {
  const auto entry = Form5(parts_.captions, handle()).ask();
  if (!entry) return;
  entries_.push_back(*entry);
  const int row = static_cast<int>(entries_.size()) - 1;
  insertRow(row);
  selectRow(row);
}

void Form2::removeEntry() {
  const int row = selectedRow();
  if (row < 0) return;
  const int answer = MessageBoxW(handle(), base::toWide(parts_.messages.msgdelentry).c_str(),
                                 L"Kestrel", MB_YESNO | MB_ICONQUESTION);
  if (answer != IDYES) return;
  entries_.erase(entries_.begin() + row);
  SendMessageW(control(kListView1), LVM_DELETEITEM, static_cast<WPARAM>(row), 0);
  SetFocus(control(kListView1));
  updateEntryButtons();
}

void Form2::editEntry() {
  const int row = selectedRow();
  if (row < 0) return;
  directory::OwnEntry& selected = entries_[static_cast<std::size_t>(row)];
  const auto entry = Form6(parts_.captions, handle(), selected).ask();
  if (!entry) return;
  selected = *entry;
  writeRow(row);
}

void Form2::updateEntryButtons() {
  const bool selected = entries_readable_ && selectedRow() >= 0;
  for (const int id : {kCommand7, kCommand8}) {
    const HWND button = control(id);
    if (!selected && GetFocus() == button) SetFocus(control(kListView1));
    EnableWindow(button, selected ? TRUE : FALSE);
  }
  EnableWindow(control(kCommand6), entries_readable_ ? TRUE : FALSE);
}

void Form2::selectRow(int row) {
  LVITEMW item{};
  item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
  item.state = row < 0 ? 0 : item.stateMask;
  SendMessageW(control(kListView1), LVM_SETITEMSTATE, static_cast<WPARAM>(row),
               reinterpret_cast<LPARAM>(&item));
  if (row >= 0) SendMessageW(control(kListView1), LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), 0);
}

int Form2::selectedRow() const {
  const auto row = static_cast<int>(
      SendMessageW(control(kListView1), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED));
  return row < static_cast<int>(entries_.size()) ? row : -1;
}

}  // namespace dialogs
