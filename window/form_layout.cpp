#include "window/form_layout.h"

#include <algorithm>

#include "window/font.h"
#include "window/gdi.h"
#include "window/window.h"

namespace window {
namespace {

constexpr int kLeastButton = 88;
constexpr int kButtonPadding = 14;  // on each side of the text
constexpr int kFieldEdges = 7;      // above and below it

int units(int pixels, window::Dpi dpi) {
  return MulDiv(pixels, window::Dpi::kBase, dpi.value());
}

BOOL CALLBACK setFontOf(HWND control, LPARAM font) noexcept {
  SendMessageW(control, WM_SETFONT, static_cast<WPARAM>(font), TRUE);
  return TRUE;
}

}  // namespace

FormArea::FormArea(HWND window, window::Dpi dpi) {
  RECT client{};
  GetClientRect(window, &client);
  width = units(client.right, dpi);
  height = units(client.bottom, dpi);
}

int textUnits(HWND control, HFONT font, window::Dpi dpi) {
  return units(window::textWidth(font, window::windowText(control)), dpi);
}

int buttonWidth(HWND button, HFONT font, window::Dpi dpi) {
  return std::max(kLeastButton, textUnits(button, font, dpi) + 2 * kButtonPadding);
}

int fieldHeight(HFONT font, window::Dpi dpi) {
  return units(window::lineHeight(font), dpi) + kFieldEdges;
}

int textHeightUnits(const std::wstring& text, HFONT font, int width, window::Dpi dpi) {
  const window::WindowDc screen(nullptr);
  const window::SelectScope selected(screen.get(), font);
  RECT area{0, 0, dpi.scale(width), 0};
  DrawTextW(screen.get(), text.c_str(), static_cast<int>(text.size()), &area,
            DT_CALCRECT | DT_WORDBREAK | DT_EDITCONTROL | DT_NOPREFIX);
  return units(area.bottom, dpi) + 2;
}

// With a blank at its end: Wine cuts the last letter otherwise.
std::string groupCaption(const std::string& marked) {
  return marked + " ";
}

void setFont(HWND window, HFONT font) {
  EnumChildWindows(window, setFontOf, reinterpret_cast<LPARAM>(font));
}

}  // namespace window
