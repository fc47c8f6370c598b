#include "player/player_skin_win.h"

#include <algorithm>

#include "player/skinmodule_win.h"
#include "res/resource.h"
#include "window/font.h"
#include "window/gdi.h"
#include "window/picture.h"

namespace player {
namespace {

constexpr int kNamePercent = 150;  // of the system's message font
constexpr int kSongPercent = 115;
constexpr SIZE kPicture{20, 20};
constexpr SIZE kSmallPicture{14, 14};

POINT centre(const RECT& area) {
  return {(area.left + area.right) / 2, (area.top + area.bottom) / 2};
}

double halfHeight(const RECT& area) {
  return (area.bottom - area.top) / 2.0;
}

RECT inflated(RECT area, int by) {
  InflateRect(&area, by, by);
  return area;
}

}  // namespace

PlayerSkin::PlayerSkin(window::Dpi dpi, bool mini)
    : theme_(window::Theme::current()),
      layout_(PlayerLayout::of(dpi, mini)),
      mini_(mini),
      name_font_(window::messageFont(dpi, kNamePercent, FW_SEMIBOLD)),
      song_font_(window::messageFont(dpi, kSongPercent)),
      detail_font_(window::messageFont(dpi)),
      play_(window::loadPicture(IDP_PLAY, mini ? kSmallPicture : kPicture, dpi)),
      stop_(window::loadPicture(IDP_STOP, mini ? kSmallPicture : kPicture, dpi)),
      record_off_(window::loadPicture(IDP_RECORD_OFF, kPicture, dpi)),
      record_on_(window::loadPicture(IDP_RECORD_ON, kPicture, dpi)),
      volume_(window::loadPicture(IDP_VOLUME, kPicture, dpi)),
      pin_(window::loadPicture(IDP_PIN, kSmallPicture, dpi)),
      close_(window::loadPicture(IDP_CLOSE, kSmallPicture, dpi)) {
  if (!theme_.high_contrast) return;
  // The pictures are made for the dark ground.
  for (const auto* picture : {&stop_, &record_off_, &record_on_, &volume_, &pin_, &close_})
    window::tint(picture->get(), theme_.text);
}

void PlayerSkin::background(window::Canvas& canvas, int percent, bool playing) const {
  canvas.fill(theme_.background);
  if (!mini_) {
    const double scale = layout_.scale;
    const POINT from = centre(layout_.Image1);
    const double rings = playing ? 0.75 : 0.4;
    canvas.disc(from.x, from.y, 92 * scale, theme_.halo, 0.30 * rings);
    canvas.disc(from.x, from.y, 64 * scale, theme_.halo, 0.45 * rings);
    canvas.disc(from.x, from.y, 42 * scale, theme_.halo, 0.80 * rings);
    picture(canvas, volume_, layout_.volume);
  }
  const RECT& progress = layout_.progress;
  if (percent >= 0) {
    canvas.bar(progress, halfHeight(progress), theme_.surface);
    RECT filled = progress;
    filled.right = progress.left + MulDiv(progress.right - progress.left, percent, 100);
    if (filled.right > filled.left) canvas.bar(filled, halfHeight(progress), theme_.accent);
  }
  framePanel(canvas, layout_.window, layout_.scale, theme_.border);
}

void PlayerSkin::play(window::Canvas& canvas, const ControlLook& look) const {
  const POINT at = centre(layout_.Image1);
  const double radius = halfHeight(layout_.Image1) - 3 * layout_.scale;
  if (look.on) {
    canvas.disc(at.x, at.y, radius, theme_.accent);
  } else {
    canvas.disc(at.x, at.y, radius, theme_.surface);
    canvas.ring(at.x, at.y, radius, 2 * layout_.scale, theme_.accent);
  }
  if (look.hot || look.pressed)
    canvas.disc(at.x, at.y, radius, theme_.text, look.pressed ? 0.22 : 0.12);
  picture(canvas, play_, layout_.Image1);
  if (look.focus)
    canvas.ring(at.x, at.y, halfHeight(layout_.Image1), 1.5 * layout_.scale, theme_.text);
}

void PlayerSkin::stop(window::Canvas& canvas, const ControlLook& look) const {
  const POINT at = centre(layout_.Image2);
  const double radius = halfHeight(layout_.Image2) - 3 * layout_.scale;
  canvas.disc(at.x, at.y, radius, theme_.surface);
  if (theme_.high_contrast) canvas.ring(at.x, at.y, radius, layout_.scale, theme_.border);
  if (look.hot || look.pressed)
    canvas.disc(at.x, at.y, radius, theme_.text, look.pressed ? 0.22 : 0.12);
  picture(canvas, stop_, layout_.Image2);
  if (look.focus)
    canvas.ring(at.x, at.y, halfHeight(layout_.Image2), 1.5 * layout_.scale, theme_.text);
}

void PlayerSkin::record(window::Canvas& canvas, const ControlLook& look,
                        const std::wstring& caption) const {
  RECT area = layout_.chkSave;
  smallButton(canvas, area, look);
  const LONG height = area.bottom - area.top;
  picture(canvas, look.on ? record_on_ : record_off_,
          {area.left, area.top, std::min(area.left + height + 4, area.right), area.bottom});
  area.left += height + static_cast<LONG>(6 * layout_.scale);
  if (area.left >= area.right) return;  // the mark alone
  canvas.text(caption.c_str(), static_cast<int>(caption.size()), area,
              DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS, detail_font_.get(),
              look.on ? theme_.record : theme_.muted);
}

void PlayerSkin::pin(window::Canvas& canvas, const ControlLook& look) const {
  smallButton(canvas, layout_.subontop, look);
  if (look.on) {
    const double radius = 5 * layout_.scale;
    canvas.bar(inflated(layout_.subontop, -2), radius, theme_.accent,
               theme_.high_contrast ? 1 : 0.8);
  }
  picture(canvas, pin_, layout_.subontop);
}

void PlayerSkin::mini(window::Canvas& canvas, const ControlLook& look) const {
  smallButton(canvas, layout_.submini, look);
  const POINT at = centre(layout_.submini);
  const auto units = [this](double size) { return static_cast<LONG>(size * layout_.scale + 0.5); };
  if (mini_) {
    canvas.frame({at.x - units(5), at.y - units(4), at.x + units(5), at.y + units(4)}, units(1.5),
                 1.6 * layout_.scale, theme_.text);
  } else {
    canvas.bar({at.x - units(5), at.y + units(3), at.x + units(5), at.y + units(5)}, units(1),
               theme_.text);
  }
}

void PlayerSkin::hide(window::Canvas& canvas, const ControlLook& look) const {
  smallButton(canvas, layout_.hide, look);
  picture(canvas, close_, layout_.hide);
}

void PlayerSkin::label(window::Canvas& canvas, Label label, const RECT& area,
                       const std::wstring& text, bool right_aligned) const {
  const UINT side = right_aligned ? DT_RIGHT : DT_LEFT;
  canvas.text(text.c_str(), static_cast<int>(text.size()), area,
              DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | side, font(label),
              label == Label::detail ? theme_.muted : theme_.text);
}

bool PlayerSkin::isCut(Label label, const RECT& area, const std::wstring& text) const {
  const window::WindowDc screen(nullptr);
  const window::SelectScope selected(screen.get(), font(label));
  SIZE size{};
  GetTextExtentPoint32W(screen.get(), text.c_str(), static_cast<int>(text.size()), &size);
  return size.cx > area.right - area.left;
}

void PlayerSkin::smallButton(window::Canvas& canvas, const RECT& area,
                             const ControlLook& look) const {
  const double radius = 6 * layout_.scale;
  if (look.hot || look.pressed) canvas.bar(area, radius, theme_.text, look.pressed ? 0.20 : 0.10);
  if (look.focus) focusRing(canvas, area, radius);
}

void PlayerSkin::focusRing(window::Canvas& canvas, const RECT& area, double radius) const {
  canvas.frame(area, radius, 1.5 * layout_.scale, theme_.text);
}

void PlayerSkin::picture(window::Canvas& canvas, const base::UniqueBitmap& picture,
                         const RECT& area) const {
  BITMAP shape{};
  if (GetObjectW(picture.get(), sizeof(shape), &shape) == 0) return;
  const POINT middle = centre(area);
  window::drawPicture(canvas.dc(), picture.get(), middle.x - shape.bmWidth / 2,
                      middle.y - shape.bmHeight / 2);
}

HFONT PlayerSkin::font(Label label) const {
  if (label == Label::name) return name_font_.get();
  return (label == Label::song ? song_font_ : detail_font_).get();
}

}  // namespace player
