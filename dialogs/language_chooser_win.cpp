#include "dialogs/language_chooser_win.h"

#include <commctrl.h>

#include <algorithm>

#include "base/utf.h"
#include "res/resource.h"
#include "window/font.h"
#include "window/form_layout.h"
#include "window/mnemonics.h"

namespace dialogs {
namespace {

enum Id : int { kPicture1 = 1001, kLabel2, kFrame1, kLabel1, kFrame2, kIc1 };

// Sizes in units of 1/96 inch.
constexpr int kWidth = 380;
constexpr int kMargin = 16;
constexpr int kPicture = 48;
constexpr int kHeadingHeight = 32;
constexpr int kHeadingPercent = 170;
constexpr int kInside = 16;
constexpr int kFrameTop = 26;
constexpr int kBoxHeight = 23;
constexpr int kDropHeight = 260;
constexpr int kGap = 12;

HICON loadIcon(int size) {
  return static_cast<HICON>(LoadImageW(window::instance(), MAKEINTRESOURCEW(IDI_NORMAL), IMAGE_ICON,
                                       size, size, LR_DEFAULTCOLOR));
}

}  // namespace

Form4::Form4(const app::Captions& captions, const app::Paths& paths, std::string& language)
    : captions_(captions), paths_(paths), language_(language), languages_(app::languages(paths)) {
  create({.class_name = L"Form4",
          .caption = captions_.get("Form4.Caption"),
          .style = WS_POPUP | WS_CAPTION | WS_SYSMENU,
          .ex_style = WS_EX_CONTROLPARENT | WS_EX_APPWINDOW,
          .icon = IDI_NORMAL});
  addControl(WC_STATICW, {}, SS_ICON | SS_REALSIZECONTROL, kPicture1);
  addControl(WC_STATICW, captions_.get("Form4.Label2"), SS_NOPREFIX | SS_CENTERIMAGE, kLabel2);
  addControl(WC_BUTTONW, {}, BS_GROUPBOX, kFrame1);
  addControl(WC_STATICW, {}, SS_NOPREFIX, kLabel1);
  addControl(WC_BUTTONW, {}, BS_GROUPBOX, kFrame2);
  addControl(WC_COMBOBOXW, {}, CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP, kIc1);
  addControl(WC_BUTTONW, window::Mnemonics::plain(captions_.get("Form4.Command1")),
             BS_DEFPUSHBUTTON | WS_TABSTOP, IDOK);
  for (const app::Language& item : languages_) {
    SendMessageW(control(kIc1), CB_ADDSTRING, 0,
                 reinterpret_cast<LPARAM>(base::toWide(item.text).c_str()));
  }
  SendMessageW(control(kIc1), CB_SETCURSEL, 0, 0);
  showTexts({});
  dress();
}

Form4::~Form4() {
  destroy();
}

void Form4::open() {
  run(nullptr, control(kIc1));
}

void Form4::onCommand(int id, int notification) {
  switch (id) {
    case kIc1:
      if (notification == CBN_SELCHANGE) ic1_Click();
      return;
    case IDOK:
    case IDCANCEL:  // what it shows is the user's language, however it is closed
      language_ = key() == app::kBuiltInKey ? "0" : key();
      return end();
    default:
      return;
  }
}

void Form4::ic1_Click() {
  if (key() == app::kBuiltInKey) return showTexts({});
  const auto texts = app::readChooserTexts(paths_, key());
  language_ = texts ? key() : "0";
  if (texts) showTexts(*texts);
}

const std::string& Form4::key() const {
  const LRESULT chosen = SendMessageW(control(kIc1), CB_GETCURSEL, 0, 0);
  return languages_[chosen < 0 ? 0 : static_cast<std::size_t>(chosen)].key;
}

void Form4::showTexts(const app::ChooserTexts& texts) {
  const bool english = key() == app::kBuiltInKey;
  const auto show = [&](int id, const char* name, const std::optional<std::string>& text) {
    if (!text && !english) return;  // what a file leaves out stays as it is
    const std::string& caption = text ? *text : captions_.get(name);
    const std::string shown = id == kLabel1 ? caption
                              : id == kFrame2
                                  ? window::groupCaption(window::Mnemonics().mark(caption))
                                  : window::groupCaption(window::Mnemonics::plain(caption));
    SetWindowTextW(control(id), base::toWide(shown).c_str());
  };
  show(kFrame1, "Form4.Frame1", texts.frame1);
  show(kLabel1, "Form4.Label1", texts.label1);
  show(kFrame2, "Form4.Frame2", texts.frame2);
}

void Form4::dress() {
  font_ = window::messageFont(dpi());
  heading_font_ = window::messageFont(dpi(), kHeadingPercent, FW_SEMIBOLD);
  window::setFont(handle(), font_.get());
  SendMessageW(control(kLabel2), WM_SETFONT, reinterpret_cast<WPARAM>(heading_font_.get()), TRUE);
  base::UniqueIcon icon(loadIcon(scale(kPicture)));
  SendMessageW(control(kPicture1), STM_SETICON, reinterpret_cast<WPARAM>(icon.get()), 0);
  icon_ = std::move(icon);
  layOut();
}

// Of the longest hint, so that nothing moves under the pointer at a choice.
int Form4::hintHeight(int width) const {
  const auto height = [&](const std::string& hint) {
    return textHeightUnits(base::toWide(hint), font_.get(), width, dpi());
  };
  int highest = height(captions_.get("Form4.Label1"));
  for (const app::Language& item : languages_) {
    const auto texts = app::readChooserTexts(paths_, item.key);
    if (texts && texts->label1) highest = std::max(highest, height(*texts->label1));
  }
  return highest;
}

void Form4::layOut() {
  constexpr int kFrame = kWidth - 2 * kMargin;
  constexpr int kText = kFrame - 2 * kInside;
  const int label = hintHeight(kText);
  int top = kMargin;
  place(control(kPicture1), kMargin, top, kPicture, kPicture);
  place(control(kLabel2), kMargin + kPicture + kGap, top + (kPicture - kHeadingHeight) / 2,
        kWidth - 2 * kMargin - kPicture - kGap, kHeadingHeight);
  top += kPicture + kGap;
  const int first = kFrameTop + label + kInside;
  place(control(kFrame1), kMargin, top, kFrame, first);
  place(control(kLabel1), kMargin + kInside, top + kFrameTop, kText, label);
  top += first + kGap;
  const int second = kFrameTop + kBoxHeight + kInside;
  place(control(kFrame2), kMargin, top, kFrame, second);
  place(control(kIc1), kMargin + kInside, top + kFrameTop, kText, kDropHeight);
  top += second + kGap + 4;
  const int button = buttonWidth(control(IDOK), font_.get(), dpi());
  place(control(IDOK), kWidth - kMargin - button, top, button, window::kFormButton);
  resizeClient(kWidth, top + window::kFormButton + kMargin);
  RedrawWindow(handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

}  // namespace dialogs
