#include "dialogs/search_dialog_win.h"

#include <commctrl.h>

#include <algorithm>

#include "base/utf.h"
#include "dialogs/dialog_ids.h"
#include "res/resource.h"
#include "window/font.h"

namespace dialogs {
namespace {

// Sizes in units of 1/96 inch.
constexpr int kLeastWidth = 400;
constexpr int kHeight = 166;
constexpr int kHeadingTop = 25;
constexpr int kHeadingHeight = 22;
constexpr int kFieldTop = 66;
constexpr int kFieldHeight = 32;
constexpr int kTextMargin = 10;
constexpr int kButtonTop = 116;
constexpr int kGap = 10;

}  // namespace

SearchForm::SearchForm(const app::Captions& captions, HWND owner, const std::string& words)
    : SkinnedForm(static_cast<window::Window&>(*this)), owner_(owner) {
  const std::string& heading = captions.get("searchform.Label2");
  create({.class_name = L"searchform",
          .caption = heading,
          .style = WS_POPUP | WS_SYSMENU | WS_CLIPCHILDREN,
          .ex_style = WS_EX_CONTROLPARENT | WS_EX_APPWINDOW,
          .width = kLeastWidth,
          .height = kHeight,
          .owner = owner,
          .background = -1,
          .icon = IDI_NORMAL});
  addControl(WC_STATICW, heading, SS_NOPREFIX | SS_ENDELLIPSIS, kIdSearchLabel2);
  addControl(WC_EDITW, words, ES_AUTOHSCROLL | WS_TABSTOP, kIdSearchText1);
  constexpr DWORD kButton = BS_OWNERDRAW | WS_TABSTOP;
  hook(addControl(WC_BUTTONW, captions.get("searchform.Label3"), kButton, IDOK));
  hook(addControl(WC_BUTTONW, captions.get("searchform.Label5"), kButton, IDCANCEL));
  dress();
}

SearchForm::~SearchForm() {
  destroy();
}

std::optional<std::string> SearchForm::ask() {
  const HWND box = control(kIdSearchText1);
  SendMessageW(box, EM_SETSEL, 0, -1);
  run(owner_, box);
  return answer_;
}

void SearchForm::onCommand(int id, int notification) {
  switch (id) {
    case kIdSearchText1:
      if (notification == EN_SETFOCUS || notification == EN_KILLFOCUS) {
        const RECT area = field();
        InvalidateRect(handle(), &area, FALSE);
      }
      return;
    case IDOK:
      answer_ = base::toNarrow(window::windowText(control(kIdSearchText1)));
      return end();
    case IDCANCEL:
      return end();
    default:
      return;
  }
}

std::optional<LRESULT> SearchForm::onMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  if (!dressed()) return std::nullopt;  // still being made
  if (const auto result = onSkinMessage(message, wparam, lparam)) return result;
  return Modal::onMessage(message, wparam, lparam);
}

void SearchForm::layOut() {
  SendMessageW(control(kIdSearchLabel2), WM_SETFONT, reinterpret_cast<WPARAM>(look().headingFont()),
               FALSE);
  const int search = look().buttonWidth(window::windowText(control(IDOK)));
  const int cancel = look().buttonWidth(window::windowText(control(IDCANCEL)));
  const int width = std::max(kLeastWidth, search + kGap + cancel + 2 * SmallForm::kMargin);
  const int right = width - SmallForm::kMargin;
  resizeClient(width, kHeight);
  place(control(kIdSearchLabel2), SmallForm::kTextLeft, kHeadingTop, right - SmallForm::kTextLeft,
        kHeadingHeight);
  const int line = window::lineHeight(look().font());  // an edit field does not centre its own
  SetWindowPos(control(kIdSearchText1), nullptr, scale(SmallForm::kMargin + kTextMargin),
               scale(kFieldTop) + (scale(kFieldHeight) - line) / 2,
               scale(width - 2 * (SmallForm::kMargin + kTextMargin)), line,
               SWP_NOZORDER | SWP_NOACTIVATE);
  place(control(IDOK), right - cancel - kGap - search, kButtonTop, search,
        SmallForm::kButtonHeight);
  place(control(IDCANCEL), right - cancel, kButtonTop, cancel, SmallForm::kButtonHeight);
}

RECT SearchForm::field() const {
  RECT client{};
  GetClientRect(handle(), &client);
  return {scale(SmallForm::kMargin), scale(kFieldTop), client.right - scale(SmallForm::kMargin),
          scale(kFieldTop + kFieldHeight)};
}

void SearchForm::paint(window::Canvas& canvas) const {
  look().field(canvas, field(), GetFocus() == control(kIdSearchText1));
}

}  // namespace dialogs
