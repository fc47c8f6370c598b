#include "window/font.h"

#include "window/gdi.h"

namespace window {

base::UniqueFont messageFont(Dpi dpi, int percent, int weight) {
  NONCLIENTMETRICSW metrics{};
  metrics.cbSize = sizeof(metrics);
  SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0);
  LOGFONTW& font = metrics.lfMessageFont;
  const WindowDc screen(nullptr);
  const int system_dpi = GetDeviceCaps(screen.get(), LOGPIXELSY);
  font.lfHeight = MulDiv(font.lfHeight, dpi.value() * percent, system_dpi * 100);
  font.lfWeight = weight;
  font.lfQuality = CLEARTYPE_QUALITY;
  return base::UniqueFont(CreateFontIndirectW(&font));
}

int textWidth(HFONT font, const std::wstring& text) {
  const WindowDc screen(nullptr);
  const SelectScope selected(screen.get(), font);
  SIZE size{};
  GetTextExtentPoint32W(screen.get(), text.c_str(), static_cast<int>(text.size()), &size);
  return size.cx;
}

int lineHeight(HFONT font) {
  const WindowDc screen(nullptr);
  const SelectScope selected(screen.get(), font);
  TEXTMETRICW metrics{};
  GetTextMetricsW(screen.get(), &metrics);
  return metrics.tmHeight;
}

}  // namespace window
