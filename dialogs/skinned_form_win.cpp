#include "dialogs/skinned_form_win.h"

#include "player/skinmodule_win.h"
#include "window/form_layout.h"
#include "window/gdi.h"

namespace dialogs {

void SkinnedForm::dress() {
  look_.emplace(window_.dpi());
  const HWND own = window_.handle();
  window::setFont(own, look_->font());
  layOut();
  RECT client{};
  GetClientRect(own, &client);
  player::applyPanel(own, {client.right, client.bottom}, look_->scale());
  RedrawWindow(own, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN);
}

std::optional<LRESULT> SkinnedForm::onSkinMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  const auto dc = reinterpret_cast<HDC>(wparam);
  switch (message) {
    case WM_ERASEBKGND:
      return 1;
    case WM_PAINT:
      return onPaint(), 0;
    case WM_CTLCOLORSTATIC:
      return look_->labelColours(dc, labelColour(GetDlgCtrlID(reinterpret_cast<HWND>(lparam))));
    case WM_CTLCOLOREDIT:
      return look_->fieldColours(dc);
    case WM_DRAWITEM:
      return drawButton(*reinterpret_cast<const DRAWITEMSTRUCT*>(lparam)), TRUE;
    case WM_LBUTTONDOWN:
      return player::DragWindow(window_.handle()), 0;
    case WM_SETTINGCHANGE:
    case WM_SYSCOLORCHANGE:
    case WM_THEMECHANGED:
      return dress(), std::nullopt;
    default:
      return std::nullopt;
  }
}

std::optional<LRESULT> SkinnedForm::onControl(HWND control, UINT message, WPARAM, LPARAM) {
  hot_.onMessage(control, message);
  return std::nullopt;
}

void SkinnedForm::drawButton(const DRAWITEMSTRUCT& item, bool pressed) const {
  look_->button(item, {.is_default = item.CtlID == IDOK,
                       .hot = hot_.is(item.hwndItem),
                       .pressed = pressed || (item.itemState & ODS_SELECTED) != 0});
}

void SkinnedForm::onPaint() const {
  const window::PaintScope paint_scope(window_.handle());
  RECT client{};
  GetClientRect(window_.handle(), &client);
  window::Canvas canvas(paint_scope.dc(), {client.right, client.bottom});
  look_->ground(canvas, {client.right, client.bottom});
  paint(canvas);
  canvas.present();
}

}  // namespace dialogs
