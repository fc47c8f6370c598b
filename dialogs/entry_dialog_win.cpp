#include "dialogs/entry_dialog_win.h"

#include <commctrl.h>

#include <algorithm>
#include <string>

#include "base/utf.h"
#include "dialogs/dialog_ids.h"
#include "res/resource.h"
#include "window/font.h"
#include "window/form_layout.h"
#include "window/mnemonics.h"

namespace dialogs {
namespace {

// Sizes in units of 1/96 inch.
constexpr SIZE kSize{440, 134};
constexpr int kMargin = 16;
constexpr int kGap = 10;
constexpr int kMostLabel = 160;
constexpr int kBoxHeight = 24;
constexpr int kLabelHeight = 18;
constexpr int kRow = 36;

}  // namespace

EntryForm::EntryForm(const app::Captions& captions, std::string_view form, HWND owner,
                     const directory::OwnEntry& entry)
    : owner_(owner) {
  const auto caption = [&](const char* control) -> const std::string& {
    return captions.get(std::string(form) + "." + control);
  };
  create({.class_name = L"KestrelEntryForm",
          .caption = caption("Caption"),
          .style = WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN,
          .ex_style = WS_EX_CONTROLPARENT | WS_EX_DLGMODALFRAME,
          .width = kSize.cx,
          .height = kSize.cy,
          .owner = owner,
          .icon = IDI_NORMAL});
  constexpr DWORD kBox = ES_AUTOHSCROLL | WS_TABSTOP;
  window::Mnemonics letters;
  addControl(WC_STATICW, letters.mark(caption("Label1")), SS_ENDELLIPSIS, kIdLabel1);
  addControl(WC_EDITW, entry.title, kBox, kIdText1, WS_EX_CLIENTEDGE);
  addControl(WC_STATICW, letters.mark(caption("Label2")), SS_ENDELLIPSIS, kIdLabel2);
  addControl(WC_EDITW, entry.url, kBox, kIdText2, WS_EX_CLIENTEDGE);
  addControl(WC_BUTTONW, letters.plain(caption("Command1")), BS_DEFPUSHBUTTON | WS_TABSTOP, IDOK);
  addControl(WC_BUTTONW, letters.plain(caption("Command2")), WS_TABSTOP, IDCANCEL);
  for (const int box : {kIdText1, kIdText2}) SendMessageW(control(box), EM_SETLIMITTEXT, 0, 0);
  dress();
  updateOk();
}

EntryForm::~EntryForm() {
  destroy();
}

std::optional<directory::OwnEntry> EntryForm::ask() {
  SendMessageW(control(kIdText1), EM_SETSEL, 0, -1);
  run(owner_, control(kIdText1));
  return answer_;
}

void EntryForm::onCommand(int id, int notification) {
  switch (id) {
    case kIdText1:
    case kIdText2:
      if (notification == EN_CHANGE || notification == EN_KILLFOCUS) updateOk();
      return;
    case IDOK:
      if (IsWindowEnabled(control(IDOK)) == FALSE) return;  // Enter comes all the same
      answer_ = typed();
      return end();
    case IDCANCEL:
      return end();
    default:
      return;
  }
}

directory::OwnEntry EntryForm::typed() const {
  return {base::toNarrow(window::windowText(control(kIdText1))),
          base::toNarrow(window::windowText(control(kIdText2)))};
}

void EntryForm::updateOk() {
  const bool complete =
      GetWindowTextLengthW(control(kIdText1)) > 0 && GetWindowTextLengthW(control(kIdText2)) > 0;
  EnableWindow(control(IDOK), complete ? TRUE : FALSE);
}

void EntryForm::dress() {
  font_ = window::messageFont(dpi());
  window::setFont(handle(), font_.get());
  layOut();
}

void EntryForm::layOut() {
  resizeClient(kSize.cx, kSize.cy);
  const auto label = [this](int id) { return textUnits(control(id), font_.get(), dpi()) + 4; };
  const int labels = std::min(std::max(label(kIdLabel1), label(kIdLabel2)), kMostLabel);
  const int left = kMargin + labels + kGap;
  const int box = fieldHeight(font_.get(), dpi());
  const auto row = [&](int label_id, int box_id, int top) {
    place(control(label_id), kMargin, top + (kBoxHeight - kLabelHeight) / 2, labels, kLabelHeight);
    place(control(box_id), left, top + (kBoxHeight - box) / 2, kSize.cx - kMargin - left, box);
  };
  row(kIdLabel1, kIdText1, kMargin);
  row(kIdLabel2, kIdText2, kMargin + kRow);
  const int top = kSize.cy - kMargin - window::kFormButton;
  const auto button = [this](int id) { return buttonWidth(control(id), font_.get(), dpi()); };
  const int cancel = kSize.cx - kMargin - button(IDCANCEL);
  const int ok = cancel - kGap - button(IDOK);
  place(control(IDOK), ok, top, button(IDOK), window::kFormButton);
  place(control(IDCANCEL), cancel, top, button(IDCANCEL), window::kFormButton);
}

}  // namespace dialogs
