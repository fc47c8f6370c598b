#include <variant>

#include "app/language_file.h"
#include "app/language_loader.h"

namespace app {
namespace {

using menu::MenuArray;
using menu::MenuItem;
using menu::MenuTree;

struct Entry {
  MenuArray MenuTree::*array;
  int index;
};
struct ReloadEntries {};  // what closes each genre's stations
struct NewSearch {};      // what leads from the search results to the next ones
struct Notice {};         // several lines

/// Where a text stands; a word is a caption's key.
using Place = std::variant<MenuItem MenuTree::*, Entry, std::string Messages::*, const char*,
                           ReloadEntries, NewSearch, Notice>;

struct StringId {
  std::string_view id;
  Place place;
};

// One line for each place: an id may have several.
constexpr StringId kStringIds[] = {
    {"1002", &MenuTree::genremenu},
    {"1003", Entry{&MenuTree::mgenre, 0}},
    {"1004", Entry{&MenuTree::mgenre, 1}},
    {"1005", Entry{&MenuTree::mgenre, 2}},
    {"1006", Entry{&MenuTree::mgenre, 3}},
    {"1007", Entry{&MenuTree::mgenre, 4}},
    {"1008", Entry{&MenuTree::mgenre, 5}},
    {"1009", Entry{&MenuTree::mgenre, 6}},
    {"1010", Entry{&MenuTree::mgenre, 7}},
    {"1011", Entry{&MenuTree::mgenre, 8}},
    {"1012", Entry{&MenuTree::mgenre, 9}},
    {"1013", Entry{&MenuTree::mgenre, 10}},
    {"1014", Entry{&MenuTree::mgenre, 11}},
    {"1015", Entry{&MenuTree::mgenre, 12}},
    {"1016", Entry{&MenuTree::mgenre, 13}},
    {"1017", Entry{&MenuTree::mgenre, 14}},
    {"1018", Entry{&MenuTree::mgenre, 15}},
    {"1019", Entry{&MenuTree::mgenre, 16}},
    {"1020", Entry{&MenuTree::mgenre, 17}},
    {"1021", Entry{&MenuTree::mgenre, 18}},
    {"1022", ReloadEntries{}},
    {"1022", &Messages::reload},
    {"1023", &MenuTree::mgenreall},
    {"1024", &MenuTree::mgenrefavs},
    {"1025", Entry{&MenuTree::subfavs, 0}},
    {"1026", &MenuTree::mnubitrate},
    {"1027", Entry{&MenuTree::subbit, 0}},
    {"1028", Entry{&MenuTree::subbit, 1}},
    {"1029", Entry{&MenuTree::subbit, 2}},
    {"1030", Entry{&MenuTree::subbit, 3}},
    {"1031", Entry{&MenuTree::subbit, 4}},
    {"1032", Entry{&MenuTree::subbit, 5}},
    {"1033", &MenuTree::mnusetup},
    {"1034", &MenuTree::mnuabout},
    {"1035", &MenuTree::mnuquit},
    {"1036", &Messages::msgnotonline},
    {"1037", &MenuTree::mgenrespecial},
    {"1038", Entry{&MenuTree::mgenre, menu::kSearchGenre}},
    {"1038", "searchform.Label3"},
    {"1039", NewSearch{}},
    {"1039", &Messages::msgnewsearch},
    {"1040", "searchform.Label2"},
    {"1041", &MenuTree::mnuplayer},
    {"1042", &MenuTree::subplayerplay},
    {"1043", &MenuTree::subplayerstop},
    {"1044", &MenuTree::mnurecordstream},
    {"1045", &MenuTree::mnuplayerwindow},
    {"1046", &MenuTree::subplayerstream},
    {"1047", &Messages::msgstream},
    {"1048", &MenuTree::mnuplayervolume},
    {"2001", "Form2.Caption"},
    {"2002", "Form2.Command3"},
    {"2002", "editfavs.Command2"},
    {"2002", "Form5.Command1"},
    {"2002", "Form6.Command1"},
    {"2003", "Form2.Command4"},
    {"2003", "editfavs.Command3"},
    {"2003", "Form5.Command2"},
    {"2003", "Form6.Command2"},
    {"2003", "searchform.Label5"},
    {"2004", "Form2.Command1"},
    {"2005", "Form2.Command2"},
    {"2006", "Form2.Check1"},
    {"2007", "Form2.Check2"},
    {"2008", "Form2.Check3"},
    {"2014", "Form2.Frame1"},
    {"2016", "Form2.Label7"},
    {"2017", "Form2.Frame2"},
    {"2017", "Form2.List2(2)"},
    {"2018", "Form2.Label3"},
    {"2019", "Form2.Check4"},
    {"2020", "Form2.Frame3"},
    {"2020", "Form2.List2(0)"},
    {"2021", "Form2.Frame4"},
    {"2021", "Form2.List2(1)"},
    {"2022", "Form2.Option1(0)"},
    {"2023", "Form2.Option1(1)"},
    {"2024", "Form2.Label12"},
    {"2025", "Form2.Option1(2)"},
    {"2026", "Form2.Frame5"},
    {"2026", "Form2.List2(3)"},
    {"2027", "Form2.Command6"},
    {"2028", "Form2.Command7"},
    {"2029", "Form2.Command8"},
    {"2030", "Form5.Label2"},
    {"2030", "Form6.Label2"},
    {"2031", &Messages::msgdelentry},
    {"2032", "Form6.Caption"},
    {"2033", "Form5.Caption"},
    {"2034", "Form5.Label1"},
    {"2034", "Form6.Label1"},
    {"2034", "Form2.ListView1(0)"},
    {"2040", "Form2.Frame6"},
    {"2040", "Form2.List2(4)"},
    {"2041", "Form2.Combo1(0)"},
    {"2041", "Form2.Combo2(0)"},
    {"2042", "Form2.Combo1(1)"},
    {"2042", "Form2.Combo2(1)"},
    {"2043", "Form2.Combo1(2)"},
    {"2043", "Form2.Combo2(2)"},
    {"2044", "Form2.Label4"},
    {"2045", "Form2.Label5"},
    {"2046", "Form2.Check5"},
    {"2047", "Form2.Label6"},
    {"2048", "Form2.Label9"},
    {"2049", "Form2.Text4"},
    {"2049", "Form2.Text5"},
    {"2050", "editfavs.ListView1(0)"},
    {"3001", "Form3.Label2"},
    {"3002", "Form3.Label4"},
    {"3003", Notice{}},
    {"3004", "Form3.Label7"},
    {"4001", "reloadform.Label1"},
    {"4002", &Messages::msgloading},
    {"4003", "reloadform.Label4"},
    {"4004", &Messages::msgreloadabort},
    {"5001", Entry{&MenuTree::subfavs, 1}},
    {"5002", "editfavs.Caption"},
    {"5003", "editfavs.Command1"},
    {"6005", "frmNetRadio.subontop"},
    {"6006", "frmNetRadio.submini"},
    {"6007", &Messages::msgplayerstatus},
};

/// Writes a text to the place that is visited.
struct Writer {
  const std::string& text;
  const Texts& texts;

  void name(MenuItem& item) const {
    if (text != "-") item.Caption = text;
  }

  void operator()(MenuItem MenuTree::*item) const { name(texts.tree.*item); }
  void operator()(Entry entry) const { name((texts.tree.*entry.array)[entry.index]); }
  void operator()(std::string Messages::*message) const { texts.messages.*message = text; }
  void operator()(const char* key) const { texts.captions.set(key, text); }
  void operator()(ReloadEntries) const {
    for (int genre = 0; genre < menu::kSearchGenre; ++genre) {
      MenuArray& stations = texts.tree.subgenre(genre);
      name(stations[stations.UBound()]);
    }
  }
  void operator()(NewSearch) const {
    for (MenuItem& item : texts.tree.subgenre(menu::kSearchGenre)) {
      if (item.Tag == "search") name(item);
    }
  }
  void operator()(Notice) const { texts.captions.set("Form3.Text1", withLineBreaks(text)); }
};

}  // namespace

void replaceText(std::string_view id, const std::string& text, const Texts& texts) {
  for (const StringId& known : kStringIds) {
    if (known.id == id) std::visit(Writer{text, texts}, known.place);
  }
}

}  // namespace app
