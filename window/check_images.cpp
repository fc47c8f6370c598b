#include "window/check_images.h"

#include <uxtheme.h>
#include <vssym32.h>

#include "base/system_function_win.h"
#include "window/gdi.h"

namespace window {
namespace {

using UniqueTheme = base::UniqueHandle<HTHEME, CloseThemeData>;

// Sizes in units of 1/96 inch.
constexpr int kImage = 16;
constexpr int kBox = 13;

/// Of no window: one would take the theme for its own edges too.
HTHEME openTheme(window::Dpi dpi) {
  static const auto open =
      base::systemFunction<decltype(&OpenThemeDataForDpi)>(L"uxtheme.dll", "OpenThemeDataForDpi");
  if (open != nullptr) return open(nullptr, L"BUTTON", static_cast<UINT>(dpi.value()));
  return OpenThemeData(nullptr, L"BUTTON");
}

void drawBox(HDC dc, HTHEME theme, RECT area, bool checked) {
  if (theme != nullptr) {
    const int state = checked ? CBS_CHECKEDNORMAL : CBS_UNCHECKEDNORMAL;
    DrawThemeBackground(theme, dc, BP_CHECKBOX, state, &area, nullptr);
  } else {
    DrawFrameControl(dc, &area, DFC_BUTTON, DFCS_BUTTONCHECK | (checked ? DFCS_CHECKED : 0U));
  }
}

}  // namespace

void setCheckImages(HWND list, window::Dpi dpi) {
  const int size = dpi.scale(kImage);
  const int margin = (size - dpi.scale(kBox)) / 2;
  const window::WindowDc screen(list);
  const window::MemoryCanvas canvas(screen.get(), {2 * size, size});
  const RECT all{0, 0, 2 * size, size};
  FillRect(canvas.dc(), &all, GetSysColorBrush(COLOR_WINDOW));
  const UniqueTheme theme(openTheme(dpi));
  for (const int i : {0, 1}) {
    const RECT box{i * size + margin, margin, (i + 1) * size - margin, size - margin};
    drawBox(canvas.dc(), theme.get(), box, i == 1);
  }
  // An image list takes no bitmap that is drawn into.
  const base::UniqueBitmap images(
      static_cast<HBITMAP>(CopyImage(canvas.bitmap(), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)));
  const HIMAGELIST boxes = ImageList_Create(size, size, ILC_COLOR24, 2, 0);
  if (boxes == nullptr || ImageList_Add(boxes, images.get(), nullptr) < 0) return;
  const auto former = reinterpret_cast<HIMAGELIST>(
      SendMessageW(list, LVM_SETIMAGELIST, LVSIL_STATE, reinterpret_cast<LPARAM>(boxes)));
  if (former != nullptr) ImageList_Destroy(former);
}

}  // namespace window
