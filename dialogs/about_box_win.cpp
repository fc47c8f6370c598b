#include "dialogs/about_box_win.h"

#include <commctrl.h>

#include <algorithm>

#include "base/utf.h"
#include "res/resource.h"
#include "window/font.h"
#include "window/form_layout.h"
#include "window/gdi.h"

namespace dialogs {
namespace {

enum Id : int { kLabel3 = 1001, kText1, kLabel6, kLabel5, kLabel1, kBasslab, kLabel4, kLabel7 };

constexpr int kLinks[] = {kLabel6, kLabel5, kLabel1, kBasslab};
constexpr int kButtons[] = {IDOK, kLabel4, kLabel7};  // `Label2` is the OK button

// Sizes in units of 1/96 inch.
constexpr int kLeastWidth = 440;
constexpr int kTitleTop = 18;
constexpr int kTitleHeight = 42;
constexpr int kNoticeTop = 78;
constexpr int kLinkRow = 22;
constexpr int kLinkHeight = 20;
constexpr int kGap = 10;

// Beside the version stands what the program is.
constexpr const char* kTitle = "Kestrel " KESTREL_VERSION "\r\nInternet radio in the tray";

constexpr const char* kOwner = "Kestrel is made by the Kestrel project";
constexpr const char* kDirectoryOwner = "The stations come from the station directory";
constexpr const char* kAudioCredit = "Audio library interface: BASS 2.3";

base::UniqueFont underlined(HFONT font) {
  LOGFONTW description{};
  GetObjectW(font, sizeof(description), &description);
  description.lfUnderline = TRUE;
  return base::UniqueFont(CreateFontIndirectW(&description));
}

std::string page(const std::string& host) {
  return "http://" + host;
}

bool isLink(UINT id) {
  return std::any_of(std::begin(kLinks), std::end(kLinks),
                     [id](int link) { return static_cast<UINT>(link) == id; });
}

}  // namespace

Form3::Form3(const app::Captions& captions, const app::Hosts& hosts, app::Desktop& desktop,
             HWND owner)
    : SkinnedForm(static_cast<window::Window&>(*this)),
      hosts_(hosts),
      desktop_(desktop),
      owner_(owner) {
  create({.class_name = L"Form3",
          .caption = "Kestrel",
          .style = WS_POPUP | WS_SYSMENU | WS_CLIPCHILDREN,
          .ex_style = WS_EX_CONTROLPARENT | WS_EX_APPWINDOW,
          .owner = owner,
          .background = -1,
          .icon = IDI_NORMAL});
  addControl(WC_STATICW, kTitle, SS_NOPREFIX, kLabel3);
  addControl(WC_EDITW, captions.get("Form3.Text1"),
             ES_MULTILINE | ES_READONLY | ES_AUTOVSCROLL | WS_TABSTOP, kText1);
  addLinks();
  constexpr DWORD kButton = BS_OWNERDRAW | WS_TABSTOP;
  hook(addControl(WC_BUTTONW, captions.get("Form3.Label2"), kButton, IDOK));
  hook(addControl(WC_BUTTONW, captions.get("Form3.Label4"), kButton, kLabel4));
  hook(addControl(WC_BUTTONW, captions.get("Form3.Label7"), kButton, kLabel7));
  dress();
}

Form3::~Form3() {
  destroy();
}

void Form3::open() {
  run(owner_, control(IDOK));
}

void Form3::addLinks() {
  constexpr DWORD kLink = BS_OWNERDRAW | WS_TABSTOP;
  addControl(WC_BUTTONW, kOwner, kLink, kLabel6);
  addControl(WC_BUTTONW, kDirectoryOwner, kLink, kLabel5);
  addControl(WC_BUTTONW, page(hosts_.directorysite), kLink, kLabel1);
  addControl(WC_BUTTONW, kAudioCredit, kLink, kBasslab);
}

void Form3::onCommand(int id, int) {
  switch (id) {
    case IDOK:
    case IDCANCEL:
      return end();
    case kLabel4:
      return checkupdate();
    case kLabel7:
      return openPage(page(hosts_.donate));
    case kLabel6:
      return openPage(page(hosts_.website));
    case kLabel5:
    case kLabel1:
      return openPage(page(hosts_.directorysite));
    case kBasslab:
      return openPage(page(hosts_.audiosite));
    default:
      return;
  }
}

void Form3::checkupdate() {
  restoreButtons();
  openPage(page(hosts_.update) + "/update2.php?file=kes&version=" KESTREL_VERSION);
}

void Form3::openPage(const std::string& address) {
  desktop_.shellopen(address);
}

void Form3::restoreButtons() {
  pressed_.clear();
  for (const int id : kButtons) InvalidateRect(control(id), nullptr, FALSE);
}

std::optional<LRESULT> Form3::onMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  if (!dressed()) return std::nullopt;  // still being made
  if (const auto result = onSkinMessage(message, wparam, lparam)) return result;
  const bool on_link = message == WM_SETCURSOR &&
                       isLink(static_cast<UINT>(GetDlgCtrlID(reinterpret_cast<HWND>(wparam))));
  if (on_link) return SetCursor(LoadCursorW(nullptr, IDC_HAND)), TRUE;
  return Modal::onMessage(message, wparam, lparam);
}

// A button that is left with the mouse button down keeps its pressed picture.
std::optional<LRESULT> Form3::onControl(HWND at, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_LBUTTONDOWN) pressed_.insert(GetDlgCtrlID(at));
  return SkinnedForm::onControl(at, message, wparam, lparam);
}

void Form3::layOut() {
  link_font_ = underlined(look().font());
  SendMessageW(control(kLabel3), WM_SETFONT, reinterpret_cast<WPARAM>(look().headingFont()), TRUE);
  SendMessageW(control(kText1), EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, 0);
  const int all = width();
  const int inside = all - 2 * SmallForm::kMargin;
  place(control(kLabel3), SmallForm::kTextLeft, kTitleTop,
        all - SmallForm::kMargin - SmallForm::kTextLeft, kTitleHeight);
  const int notice =
      textHeightUnits(window::windowText(control(kText1)), look().font(), inside, dpi());
  place(control(kText1), SmallForm::kMargin, kNoticeTop, inside, notice);
  const int buttons = placeLinks(kNoticeTop + notice + kGap) + kGap;
  placeButtons(buttons);
  resizeClient(all, buttons + SmallForm::kButtonHeight + SmallForm::kMargin);
}

int Form3::width() const {
  int text = buttonsWidth();
  for (const int link : kLinks) {
    text = std::max(text, textUnits(control(link), look().font(), dpi()) + 4);
  }
  return std::max(kLeastWidth, text + 2 * SmallForm::kMargin);
}

int Form3::placeLinks(int top) {
  for (const int link : kLinks) {
    const int text = textUnits(control(link), look().font(), dpi()) + 4;
    place(control(link), SmallForm::kMargin, top, text, kLinkHeight);
    top += kLinkRow;
  }
  return top;
}

int Form3::buttonsWidth() const {
  int all = -kGap;
  for (const int id : kButtons) all += look().buttonWidth(window::windowText(control(id))) + kGap;
  return all;
}

void Form3::placeButtons(int top) {
  int left = width() - SmallForm::kMargin - buttonsWidth();
  for (const int id : kButtons) {
    const int button = look().buttonWidth(window::windowText(control(id)));
    place(control(id), left, top, button, SmallForm::kButtonHeight);
    left += button + kGap;
  }
}

COLORREF Form3::labelColour(int id) const {
  return id == kLabel3 ? look().theme().text : look().theme().muted;
}

void Form3::drawButton(const DRAWITEMSTRUCT& item) const {
  if (isLink(item.CtlID)) return drawLink(item);
  SkinnedForm::drawButton(item, pressed_.contains(static_cast<int>(item.CtlID)));
}

void Form3::drawLink(const DRAWITEMSTRUCT& item) const {
  const window::Theme& theme = look().theme();
  RECT area{};
  GetClientRect(item.hwndItem, &area);
  window::Canvas canvas(item.hDC, {area.right, area.bottom});
  canvas.fill(theme.background);
  const std::wstring text = window::windowText(item.hwndItem);
  const bool pressed = (item.itemState & ODS_SELECTED) != 0;
  canvas.text(text.c_str(), static_cast<int>(text.size()), area,
              DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX, link_font_.get(),
              pressed || theme.high_contrast ? theme.text : theme.accent);
  if ((item.itemState & ODS_FOCUS) != 0) canvas.frame(area, 0, scale(1), theme.text);
  canvas.present();
}

}  // namespace dialogs
