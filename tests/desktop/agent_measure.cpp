#include "agent.h"
// Needs windows.h first.
#include <commctrl.h>

#include <array>
#include <string>

#include "window/font.h"
#include "window/gdi.h"
#include "window/window.h"

namespace desktop_test {
namespace {

constexpr int kBase = 96;  // dots per inch of the units below

/// What the styles' edges and marks take, in units of 1/96 inch.
constexpr int kGroupEdges = 18;
constexpr int kCheckGap = 6;  // between a mark, as wide as its control is high, and its text
constexpr int kItemEdges = 4;
constexpr int kColumnEdges = 12;

class Measure {
 public:
  Measure(Json& json, HWND control) : json_(json), control_(control), dc_(control) {
    GetClientRect(control, &client_);
  }

  void write() {
    RECT rect{};
    GetWindowRect(control_, &rect);
    const std::wstring kind = className(control_);
    const bool is_group = kind == L"Button" && (style_ & BS_TYPEMASK) == BS_GROUPBOX;
    json_.open('{').fields("id", 0LL + GetDlgCtrlID(control_), "group", is_group, "rect", rect);
    json_.key("texts").open('[');
    if (kind == L"Static") label();
    if (kind == L"Button") button();
    if (kind == L"Edit") edit();
    if (kind == L"ListBox") items(LB_GETCOUNT, LB_GETTEXTLEN, LB_GETTEXT, 0);
    if (kind == L"ComboBox")
      items(CB_GETCOUNT, CB_GETLBTEXTLEN, CB_GETLBTEXT, GetSystemMetrics(SM_CXVSCROLL));
    if (kind == L"SysListView32") columns();
    json_.close(']').close('}');
  }

 private:
  [[nodiscard]] int units(int size) const {
    return MulDiv(size, GetDeviceCaps(dc_.get(), LOGPIXELSX), kBase);
  }

  /// `format` as DrawText takes it; `taken` of the control's width is not for the text.
  void text(const std::wstring& text, UINT format, int taken) {
    const SIZE room{client_.right - taken, client_.bottom};
    RECT area{0, 0, room.cx, 0};
    DrawTextW(dc_.get(), text.c_str(), static_cast<int>(text.size()), &area, format | DT_CALCRECT);
    const bool cut = area.right > room.cx || area.bottom > room.cy;
    if (cut) json_.value(std::wstring_view(text));
  }

  void label() {
    if ((style_ & SS_TYPEMASK) == SS_ICON) return;
    const UINT prefix = (style_ & SS_NOPREFIX) != 0 ? DT_NOPREFIX : 0;
    const bool one_line = (style_ & (SS_ENDELLIPSIS | SS_CENTERIMAGE)) != 0 ||
                          (style_ & SS_TYPEMASK) == SS_OWNERDRAW ||
                          client_.bottom < 2 * window::lineHeight(font_);
    text(window::windowText(control_), prefix | (one_line ? DT_SINGLELINE : DT_WORDBREAK), 0);
  }

  void button() {
    const UINT type = style_ & BS_TYPEMASK;
    int taken = units(kItemEdges);
    if (type == BS_GROUPBOX) taken = units(kGroupEdges);
    if (type == BS_AUTOCHECKBOX || type == BS_AUTORADIOBUTTON) {
      taken = client_.bottom + units(kCheckGap);
    }
    // A button with a picture has its text for screen readers only.
    const bool picture = client_.right <= client_.bottom;
    if (picture) return;
    text(window::windowText(control_), DT_SINGLELINE | (type == BS_OWNERDRAW ? DT_NOPREFIX : 0),
         taken);
  }

  // What a field of one line holds may be scrolled to.
  void edit() {
    const bool lines = (style_ & ES_MULTILINE) != 0;
    text(lines ? window::windowText(control_) : L"Wg",
         DT_NOPREFIX | (lines ? DT_WORDBREAK | DT_EDITCONTROL : DT_SINGLELINE), 0);
  }

  void items(UINT count_message, UINT length_message, UINT text_message, int button) {
    const auto count = static_cast<WPARAM>(SendMessageW(control_, count_message, 0, 0));
    for (WPARAM i = 0; i < count; ++i) {
      std::wstring item(static_cast<std::size_t>(SendMessageW(control_, length_message, i, 0)),
                        L'\0');
      SendMessageW(control_, text_message, i, reinterpret_cast<LPARAM>(item.data()));
      text(item, DT_SINGLELINE | DT_NOPREFIX, units(kItemEdges) + button);
    }
  }

  void columns() {
    const auto header = reinterpret_cast<HWND>(SendMessageW(control_, LVM_GETHEADER, 0, 0));
    const LRESULT count = SendMessageW(header, HDM_GETITEMCOUNT, 0, 0);
    for (WPARAM i = 0; i < static_cast<WPARAM>(count); ++i) {
      std::array<wchar_t, 128> name{};
      LVCOLUMNW column{};
      column.mask = LVCF_TEXT | LVCF_WIDTH;
      column.pszText = name.data();
      column.cchTextMax = static_cast<int>(name.size());
      SendMessageW(control_, LVM_GETCOLUMNW, i, reinterpret_cast<LPARAM>(&column));
      text(name.data(), DT_SINGLELINE | DT_NOPREFIX,
           static_cast<int>(client_.right) - column.cx + units(kColumnEdges));
    }
  }

  Json& json_;
  const HWND control_;
  const window::WindowDc dc_;
  const HFONT font_ = reinterpret_cast<HFONT>(SendMessageW(control_, WM_GETFONT, 0, 0));
  const window::SelectScope selected_{dc_.get(), font_ ? font_ : GetStockObject(SYSTEM_FONT)};
  const UINT style_ = static_cast<UINT>(GetWindowLongW(control_, GWL_STYLE));
  RECT client_{};
};

struct Children {
  Json& json;
  HWND window;
};

BOOL CALLBACK measureChild(HWND control, LPARAM lparam) {
  const auto& children = *reinterpret_cast<Children*>(lparam);
  RECT rect{};
  GetWindowRect(control, &rect);
  if (GetParent(control) == children.window && IsWindowVisible(control) != FALSE &&
      IsRectEmpty(&rect) == FALSE)
    Measure(children.json, control).write();
  return TRUE;
}

/// Whether the title is wider than its bar has room, between the icon and the buttons.
bool cutsTitle(HWND window) {
  const auto style = static_cast<UINT>(GetWindowLongW(window, GWL_STYLE));
  if ((style & WS_CAPTION) != WS_CAPTION) return false;
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof(metrics);
  SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0);
  const base::UniqueFont font(CreateFontIndirectW(&metrics.lfCaptionFont));
  RECT client{};
  GetClientRect(window, &client);
  const int buttons = (style & WS_MAXIMIZEBOX) != 0 ? 3 : 1;
  return window::textWidth(font.get(), window::windowText(window)) >
         client.right - (buttons + 1) * GetSystemMetrics(SM_CXSIZE);
}

}  // namespace

void writeMeasures(Json& json, HWND window) {
  RECT client{};
  GetClientRect(window, &client);
  MapWindowPoints(window, nullptr, reinterpret_cast<POINT*>(&client), 2);
  json.open('{').fields("client", client, "cut", cutsTitle(window)).key("controls").open('[');
  Children children{json, window};
  EnumChildWindows(window, measureChild, reinterpret_cast<LPARAM>(&children));
  json.close(']').close('}');
}

}  // namespace desktop_test
