#pragma once

#include <windows.h>
// Needs windows.h first.
#include <commctrl.h>

namespace dialogs::form2 {

/// Control ids of the settings dialog, by the controls' inherited names. `Command3`
/// is IDOK and `Command4` IDCANCEL.
enum Id : int {
  kList2 = 1001,  ///< the pages
  kFrame1,
  kFrame2,
  kFrame3,
  kFrame4,
  kFrame5,
  kFrame6,
  kCheck1,
  kCheck2,
  kCheck3,
  kCheck4,
  kCheck5,
  kOption1_0,
  kOption1_1,
  kOption1_2,
  kText1,
  kText2,
  kText3,
  kText4,
  kText5,
  kLabel2,
  kLabel3,
  kLabel4,
  kLabel5,
  kLabel6,
  kLabel7,
  kLabel9,
  kLabel12,
  kImage1_2,  ///< `Image1` and `Image2`, the two halves of one up-down control
  kImage4_3,  ///< `Image4` and `Image3`
  kIc1,
  kCombo1,
  kCombo2,
  kList1,
  kListView1,
  kCommand1,
  kCommand2,
  kCommand5,
  kCommand6,
  kCommand7,
  kCommand8,
  kCommand9,
  kCommand10,
};

/// The pages in the order of `List2`; kAll for what is always there.
enum Page : int { kAll = -1, kProgram, kPlayer, kGenres, kOwnEntries, kSystray, kPages };

struct Control {
  int id;
  Page page;
  const wchar_t* window_class;
  const char* caption;  ///< below "Form2." in the captions; null for none
  DWORD style;
  DWORD ex_style = 0;
};

inline constexpr DWORD kLabelStyle = SS_LEFT;     // of the control after it
inline constexpr DWORD kTextStyle = SS_NOPREFIX;  // stands for itself
inline constexpr DWORD kCheckStyle = BS_AUTOCHECKBOX | WS_TABSTOP;
inline constexpr DWORD kEditStyle = ES_AUTOHSCROLL | WS_TABSTOP;
inline constexpr DWORD kComboStyle = CBS_DROPDOWNLIST | WS_VSCROLL | WS_TABSTOP;
inline constexpr DWORD kListStyle = LBS_NOTIFY | LBS_NOINTEGRALHEIGHT | WS_VSCROLL | WS_TABSTOP;
inline constexpr DWORD kPathStyle = kEditStyle | ES_READONLY;

/// All controls in their tab order; a group box comes before what it holds.
inline constexpr Control kControls[] = {
    {kList2, kAll, WC_LISTBOXW, nullptr, kListStyle, WS_EX_CLIENTEDGE},

    {kFrame3, kProgram, WC_BUTTONW, "Frame3", BS_GROUPBOX},
    {kCheck1, kProgram, WC_BUTTONW, "Check1", kCheckStyle | WS_GROUP},
    {kCheck2, kProgram, WC_BUTTONW, "Check2", kCheckStyle},
    {kCheck4, kProgram, WC_BUTTONW, "Check4", kCheckStyle},
    {kCheck3, kProgram, WC_BUTTONW, "Check3", kCheckStyle},
    {kLabel7, kProgram, WC_STATICW, "Label7", kLabelStyle},
    {kText1, kProgram, WC_EDITW, nullptr, kEditStyle, WS_EX_CLIENTEDGE},
    {kImage1_2, kProgram, UPDOWN_CLASSW, nullptr, 0},
    {kLabel3, kProgram, WC_STATICW, "Label3", kLabelStyle},
    {kText2, kProgram, WC_EDITW, nullptr, kEditStyle, WS_EX_CLIENTEDGE},
    {kImage4_3, kProgram, UPDOWN_CLASSW, nullptr, 0},
    {kFrame1, kProgram, WC_BUTTONW, "Frame1", BS_GROUPBOX},
    {kIc1, kProgram, WC_COMBOBOXW, nullptr, kComboStyle},
    {kLabel2, kProgram, WC_STATICW, "Label2", kTextStyle | SS_ENDELLIPSIS},

    {kFrame4, kPlayer, WC_BUTTONW, "Frame4", BS_GROUPBOX},
    {kOption1_0, kPlayer, WC_BUTTONW, "Option1(0)", BS_AUTORADIOBUTTON | WS_TABSTOP | WS_GROUP},
    {kOption1_1, kPlayer, WC_BUTTONW, "Option1(1)", BS_AUTORADIOBUTTON},
    {kOption1_2, kPlayer, WC_BUTTONW, "Option1(2)", BS_AUTORADIOBUTTON},
    // Below the field on the screen, but before it: screen readers name the field by it.
    {kLabel12, kPlayer, WC_STATICW, "Label12", kTextStyle | WS_GROUP},
    {kText3, kPlayer, WC_EDITW, nullptr, kEditStyle, WS_EX_CLIENTEDGE},
    {kCommand5, kPlayer, WC_BUTTONW, nullptr, WS_TABSTOP},
    {kCheck5, kPlayer, WC_BUTTONW, "Check5", kCheckStyle},

    {kFrame2, kGenres, WC_BUTTONW, "Frame2", BS_GROUPBOX},
    {kList1, kGenres, WC_LISTBOXW, nullptr, kListStyle | LBS_MULTIPLESEL, WS_EX_CLIENTEDGE},
    {kCommand1, kGenres, WC_BUTTONW, "Command1", WS_TABSTOP},
    {kCommand2, kGenres, WC_BUTTONW, "Command2", WS_TABSTOP},

    {kFrame5, kOwnEntries, WC_BUTTONW, "Frame5", BS_GROUPBOX},
    {kListView1, kOwnEntries, WC_LISTVIEWW, nullptr,
     LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS | LVS_NOSORTHEADER | WS_TABSTOP,
     WS_EX_CLIENTEDGE},
    {kCommand6, kOwnEntries, WC_BUTTONW, "Command6", WS_TABSTOP},
    {kCommand7, kOwnEntries, WC_BUTTONW, "Command7", WS_TABSTOP},
    {kCommand8, kOwnEntries, WC_BUTTONW, "Command8", WS_TABSTOP},

    {kFrame6, kSystray, WC_BUTTONW, "Frame6", BS_GROUPBOX},
    {kLabel4, kSystray, WC_STATICW, "Label4", kLabelStyle},
    {kCombo1, kSystray, WC_COMBOBOXW, nullptr, kComboStyle},
    {kLabel5, kSystray, WC_STATICW, "Label5", kLabelStyle},
    {kCombo2, kSystray, WC_COMBOBOXW, nullptr, kComboStyle},
    {kLabel6, kSystray, WC_STATICW, "Label6", kLabelStyle},
    {kText4, kSystray, WC_EDITW, "Text4", kPathStyle, WS_EX_CLIENTEDGE},
    {kCommand9, kSystray, WC_BUTTONW, nullptr, WS_TABSTOP},
    {kLabel9, kSystray, WC_STATICW, "Label9", kLabelStyle},
    {kText5, kSystray, WC_EDITW, "Text5", kPathStyle, WS_EX_CLIENTEDGE},
    {kCommand10, kSystray, WC_BUTTONW, nullptr, WS_TABSTOP},

    {IDOK, kAll, WC_BUTTONW, "Command3", BS_DEFPUSHBUTTON | WS_TABSTOP | WS_GROUP},
    {IDCANCEL, kAll, WC_BUTTONW, "Command4", WS_TABSTOP},
};

}  // namespace dialogs::form2
