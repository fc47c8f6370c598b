#include "dialogs/skinned_look_win.h"

#include <algorithm>

#include "player/skinmodule_win.h"
#include "res/resource.h"
#include "window/font.h"
#include "window/gdi.h"
#include "window/window.h"

namespace dialogs {
namespace {

constexpr int kHeadingPercent = 120;
constexpr int kLeastButton = 92;    // units
constexpr int kButtonPadding = 18;  // on each side of the text
constexpr int kRadius = 6;

HICON loadIcon(int size) {
  return static_cast<HICON>(LoadImageW(window::instance(), MAKEINTRESOURCEW(IDI_NORMAL), IMAGE_ICON,
                                       size, size, LR_DEFAULTCOLOR));
}

}  // namespace

SmallForm::SmallForm(window::Dpi dpi)
    : dpi_(dpi),
      theme_(window::Theme::current()),
      heading_font_(window::messageFont(dpi, kHeadingPercent, FW_SEMIBOLD)),
      font_(window::messageFont(dpi)),
      background_(CreateSolidBrush(theme_.background)),
      surface_(CreateSolidBrush(theme_.surface)),
      icon_(loadIcon(dpi.scale(kIcon))) {}

void SmallForm::ground(window::Canvas& canvas, SIZE size) const {
  canvas.fill(theme_.background);
  const int icon = dpi_.scale(kIcon);
  DrawIconEx(canvas.dc(), dpi_.scale(kMargin), dpi_.scale(kMargin), icon_.get(), icon, icon, 0,
             nullptr, DI_NORMAL);
  player::framePanel(canvas, size, scale(), theme_.border);
}

void SmallForm::field(window::Canvas& canvas, const RECT& area, bool focus) const {
  const double radius = dpi_.scale(kRadius);
  canvas.bar(area, radius, theme_.surface);
  if (focus || theme_.high_contrast) {
    canvas.frame(area, radius, dpi_.scale(focus ? 2 : 1), focus ? theme_.accent : theme_.border);
  }
}

void SmallForm::button(const DRAWITEMSTRUCT& item, const ButtonLook& look) const {
  const bool disabled = (item.itemState & ODS_DISABLED) != 0;
  const double radius = dpi_.scale(kRadius);
  RECT area{};
  GetClientRect(item.hwndItem, &area);
  window::Canvas canvas(item.hDC, {area.right, area.bottom});
  canvas.fill(theme_.background);
  canvas.bar(area, radius, look.is_default ? theme_.accent : theme_.surface, disabled ? 0.5 : 1);
  if (theme_.high_contrast) canvas.frame(area, radius, dpi_.scale(1), theme_.border);
  if (look.hot || look.pressed) canvas.bar(area, radius, theme_.text, look.pressed ? 0.20 : 0.10);
  if ((item.itemState & ODS_FOCUS) != 0) {
    canvas.frame(area, radius, 1.5 * scale(), theme_.text);
  }
  if (look.pressed) OffsetRect(&area, 0, dpi_.scale(1));
  const std::wstring text = window::windowText(item.hwndItem);
  canvas.text(text.c_str(), static_cast<int>(text.size()), area,
              DT_SINGLELINE | DT_CENTER | DT_VCENTER, font(),
              disabled          ? theme_.muted
              : look.is_default ? theme_.on_accent
                                : theme_.text);
  canvas.present();
}

LRESULT SmallForm::labelColours(HDC dc, COLORREF text) const {
  SetTextColor(dc, text);
  SetBkColor(dc, theme_.background);
  return reinterpret_cast<LRESULT>(background_.get());
}

LRESULT SmallForm::fieldColours(HDC dc) const {
  SetTextColor(dc, theme_.text);
  SetBkColor(dc, theme_.surface);
  return reinterpret_cast<LRESULT>(surface_.get());
}

int SmallForm::buttonWidth(const std::wstring& text) const {
  const int width = MulDiv(window::textWidth(font(), text), window::Dpi::kBase, dpi_.value());
  return std::max(kLeastButton, width + 2 * kButtonPadding);
}

}  // namespace dialogs
