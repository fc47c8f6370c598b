// Where the settings dialog's controls stand: as wide as their texts need, in every
// language and density. Sizes are units of 1/96 inch.
#include <algorithm>

#include "base/utf.h"
#include "dialogs/settings_controls_win.h"
#include "dialogs/settings_dialog_win.h"
#include "window/font.h"
#include "window/form_layout.h"

namespace dialogs {
namespace {

using namespace form2;

constexpr int kMargin = 12;
constexpr int kGap = 8;
constexpr int kInside = 16;    // from a frame's edge to what it holds
constexpr int kFrameTop = 26;  // from a frame's upper edge to what it holds
constexpr int kPageHeight = 298;
constexpr int kLeastPage = 330;
constexpr int kLeastNames = 120;
constexpr int kLabelHeight = 17;
constexpr int kBoxHeight = 23;
constexpr int kLabelDrop = (kBoxHeight - kLabelHeight) / 2;
constexpr int kCheckHeight = 20;
constexpr int kCheckRow = 24;
constexpr int kMark = 24;  // box or dot of a choice, and the space beside it
constexpr int kNumberWidth = 56;
constexpr int kUpDownWidth = 19;
constexpr int kBrowseWidth = 32;
constexpr int kComboWidth = 170;
constexpr int kDropHeight = 220;  // of a combo with its list open
constexpr int kSlack = 4;         // rounding and the margins of a label

}  // namespace

void Form2::dress() {
  font_ = window::messageFont(dpi());
  window::setFont(handle(), font_.get());
  layOut();
}

void Form2::layOut() {
  const int names = std::max(kLeastNames, widestPageName() + 2 * kGap);
  const int left = kMargin + names + kMargin;
  const int width = pageWidth();
  const int height = kMargin + kPageHeight + kMargin + window::kFormButton + kMargin;
  resizeClient(left + width + kMargin, height);
  placeAt(kList2, kMargin, kMargin + 7, names, kPageHeight - 7);
  for (const int frame : {kFrame2, kFrame3, kFrame4, kFrame5, kFrame6}) {
    placeAt(frame, left, kMargin, width, kPageHeight);
  }
  const int inside = width - 2 * kInside;
  placeProgramPage(left + kInside, inside);
  placePlayerPage(left + kInside, inside);
  placeGenresPage(left + kInside, inside);
  placeOwnEntriesPage(left + kInside, inside);
  placeSystrayPage(left + kInside, inside);
  placeButtons({IDOK, IDCANCEL}, left + width - buttonsWidth({IDOK, IDCANCEL}),
               height - kMargin - window::kFormButton);
  RedrawWindow(handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

int Form2::textWidth(int id) const {
  return textUnits(control(id), font_.get(), dpi()) + kSlack;
}

int Form2::widest(std::initializer_list<int> ids) const {
  int width = 0;
  for (const int id : ids) width = std::max(width, textWidth(id));
  return width;
}

int Form2::widestPageName() const {
  int pixels = 0;
  for (int page = 0; page < kPages; ++page) {
    const std::string key = "Form2.List2(" + std::to_string(page) + ")";
    const std::wstring name = base::toWide(parts_.captions.get(key));
    pixels = std::max(pixels, window::textWidth(font_.get(), name));
  }
  return MulDiv(pixels, window::Dpi::kBase, dpi().value()) + kSlack;
}

int Form2::buttonsWidth(std::initializer_list<int> ids) const {
  int width = -kGap;
  for (const int id : ids) width += buttonWidth(control(id), font_.get(), dpi()) + kGap;
  return width;
}

int Form2::pageWidth() const {
  const int needed = std::max({
      kMark + widest({kCheck1, kCheck2, kCheck3, kCheck4, kCheck5}),
      kMark + widest({kOption1_0, kOption1_1, kOption1_2, kLabel12}),
      widest({kLabel3, kLabel7}) + kGap + kNumberWidth + kUpDownWidth,
      2 * kInside + widest({kFrame1}),
      widest({kLabel4, kLabel5, kLabel6, kLabel9}) + kGap + kComboWidth,
      buttonsWidth({kCommand1, kCommand2}),
      buttonsWidth({kCommand6, kCommand7, kCommand8}),
      kGap + widest({kFrame2, kFrame3, kFrame4, kFrame5, kFrame6}),
  });
  return std::max(kLeastPage, needed + 2 * kInside);
}

void Form2::placeProgramPage(int left, int width) {
  int top = kMargin + kFrameTop;
  for (const int id : {kCheck1, kCheck2, kCheck4, kCheck3}) {
    placeAt(id, left, top, kMark + textWidth(id), kCheckHeight);
    top += kCheckRow;
  }
  const int labels = widest({kLabel3, kLabel7});
  top += kGap;
  placeNumber(kLabel7, kText1, kImage1_2, left, top, labels);
  top += kBoxHeight + kGap;
  placeNumber(kLabel3, kText2, kImage4_3, left, top, labels);
  top += kBoxHeight + kMargin;
  const int bottom = kMargin + kPageHeight - kMargin;
  placeAt(kFrame1, left, top, width, bottom - top);
  placeAt(kIc1, left + kInside, top + kFrameTop - 4, width - 2 * kInside, kDropHeight);
  placeAt(kLabel2, left + kInside, top + kFrameTop - 4 + kBoxHeight + kGap, width - 2 * kInside,
          kLabelHeight);
}

void Form2::placeNumber(int label, int field, int up_down, int left, int top, int labels) {
  placeAt(label, left, top + kLabelDrop, labels, kLabelHeight);
  placeField(field, left + labels + kGap, top, kNumberWidth);
  placeField(up_down, left + labels + kGap + kNumberWidth, top, kUpDownWidth);
}

// In the middle of its row.
void Form2::placeField(int id, int left, int top, int width) {
  const int height = fieldHeight(font_.get(), dpi());
  placeAt(id, left, top + (kBoxHeight - height) / 2, width, height);
}

void Form2::placePlayerPage(int left, int width) {
  int top = kMargin + kFrameTop;
  const auto choice = [&](int id) {
    placeAt(id, left, top, kMark + textWidth(id), kCheckHeight);
    top += kCheckRow;
  };
  choice(kOption1_0);
  choice(kOption1_1);
  const int path = width - kMark - kGap - kBrowseWidth;
  placeField(kText3, left + kMark, top, path);
  placeAt(kCommand5, left + width - kBrowseWidth, top - 1, kBrowseWidth, kBoxHeight + 2);
  top += kBoxHeight + kGap / 2;
  placeAt(kLabel12, left + kMark, top, width - kMark, kLabelHeight);
  top += kCheckRow;
  choice(kOption1_2);
  top += kMargin;
  choice(kCheck5);
}

void Form2::placeGenresPage(int left, int width) {
  const int top = kMargin + kFrameTop;
  const int buttons = kMargin + kPageHeight - kMargin - window::kFormButton;
  const HWND list = control(kList1);
  placeAt(kList1, left, top, width, buttons - kGap - top);
  // Its last line whole.
  RECT own{}, inside{};
  GetWindowRect(list, &own);
  GetClientRect(list, &inside);
  const int line = static_cast<int>(SendMessageW(list, LB_GETITEMHEIGHT, 0, 0));
  SetWindowPos(list, nullptr, 0, 0, own.right - own.left,
               own.bottom - own.top - static_cast<int>(inside.bottom) % std::max(line, 1),
               SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
  placeButtons({kCommand1, kCommand2}, left, buttons);
}

void Form2::placeOwnEntriesPage(int left, int width) {
  const int top = kMargin + kFrameTop;
  const int buttons = kMargin + kPageHeight - kMargin - window::kFormButton;
  placeAt(kListView1, left, top, width, buttons - kGap - top);
  placeButtons({kCommand6, kCommand7, kCommand8}, left, buttons);
  RECT inside{};
  GetClientRect(control(kListView1), &inside);
  SendMessageW(control(kListView1), LVM_SETCOLUMNWIDTH, 0, inside.right * 2 / 5);
  SendMessageW(control(kListView1), LVM_SETCOLUMNWIDTH, 1, inside.right - inside.right * 2 / 5);
}

void Form2::placeSystrayPage(int left, int width) {
  int top = kMargin + kFrameTop;
  const int labels = widest({kLabel4, kLabel5, kLabel6, kLabel9});
  const int box = left + labels + kGap;
  const int box_width = left + width - box;
  const auto label = [&](int id) { placeAt(id, left, top + kLabelDrop, labels, kLabelHeight); };
  for (const auto& [name, combo] : {std::pair{kLabel4, kCombo1}, {kLabel5, kCombo2}}) {
    label(name);
    placeAt(combo, box, top, box_width, kDropHeight);
    top += kBoxHeight + kGap + 2;
  }
  top += kGap;
  struct Icon {
    int name, path, browse;
  };
  for (const Icon& icon : {Icon{kLabel6, kText4, kCommand9}, {kLabel9, kText5, kCommand10}}) {
    label(icon.name);
    placeField(icon.path, box, top, box_width - kGap - kBrowseWidth);
    placeAt(icon.browse, left + width - kBrowseWidth, top - 1, kBrowseWidth, kBoxHeight + 2);
    top += kBoxHeight + kGap + 2;
  }
}

void Form2::placeButtons(std::initializer_list<int> ids, int left, int top) {
  for (const int id : ids) {
    const int width = buttonWidth(control(id), font_.get(), dpi());
    placeAt(id, left, top, width, window::kFormButton);
    left += width + kGap;
  }
}

void Form2::placeAt(int id, int left, int top, int width, int height) const {
  place(control(id), left, top, width, height);
}

}  // namespace dialogs
