#include "window/theme.h"

namespace window {

Theme Theme::current() {
  HIGHCONTRASTW contrast{};
  contrast.cbSize = sizeof(contrast);
  SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof(contrast), &contrast, 0);
  if ((contrast.dwFlags & HCF_HIGHCONTRASTON) != 0) {
    const COLORREF text = GetSysColor(COLOR_WINDOWTEXT);
    return {.background = GetSysColor(COLOR_WINDOW),
            .halo = GetSysColor(COLOR_WINDOW),
            .surface = GetSysColor(COLOR_WINDOW),
            .border = text,
            .text = text,
            .muted = text,
            .accent = GetSysColor(COLOR_HIGHLIGHT),
            .on_accent = GetSysColor(COLOR_HIGHLIGHTTEXT),
            .record = GetSysColor(COLOR_HIGHLIGHT),
            .high_contrast = true};
  }
  return {.background = RGB(0x1f, 0x29, 0x33),
          .halo = RGB(0x2b, 0x3e, 0x4b),
          .surface = RGB(0x3a, 0x4a, 0x57),
          .border = RGB(0x3a, 0x4a, 0x57),
          .text = RGB(0xf3, 0xed, 0xe2),
          .muted = RGB(0x9f, 0xaf, 0xbb),
          .accent = RGB(0xd9, 0x82, 0x3b),
          .on_accent = RGB(0xff, 0xfa, 0xf0),
          .record = RGB(0xe5, 0x57, 0x3f),
          .high_contrast = false};
}

}  // namespace window
