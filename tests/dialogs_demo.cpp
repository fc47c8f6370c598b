#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "dialogs/editfavs_win.h"
#include "dialogs/entry_form_win.h"
#include "dialogs/reloadform_win.h"
#include "dialogs/searchform_win.h"
#include "window/message_pump.h"

// The small dialogs with sample texts, to be looked at:
//   dialogs_demo WINDOW [SECONDS] [german]
// Windows: reload, aborted, search, favourites, add, edit. KESTREL_DPI sets the density.

namespace {

void makeGerman(app::Captions& captions, app::Messages& messages) {
  captions.set("reloadform.Label1", "Stationen aller Genres werden neu eingelesen");
  captions.set("reloadform.Label4", "Vorgang abbrechen");
  captions.set("searchform.Label2", "Suche nach Stationen mit den Wörtern ...");
  captions.set("searchform.Label3", "Suche beginnen");
  captions.set("searchform.Label5", "Abbrechen");
  captions.set("editfavs.Command1", "Markierte Einträge entfernen");
  captions.set("editfavs.Command3", "Abbrechen");
  for (const std::string form : {"Form5", "Form6"}) {
    captions.set(form + ".Label1", "Bezeichnung des Senders");
    captions.set(form + ".Label2", "Internetadresse (URL)");
    captions.set(form + ".Command2", "Abbrechen");
  }
  messages.msgreloadabort = "Das Einlesen wurde abgebrochen - Bitte einen Augenblick warten!";
}

std::vector<directory::OwnEntry> favourites() {
  std::vector<directory::OwnEntry> list{{"Radio Swiss Jazz", "http://127.0.0.1/1.pls"},
                                        {"Österreich 1 & Freunde", "http://127.0.0.1/2.pls"},
                                        {"Радио Культура", "http://127.0.0.1/3.pls"}};
  list.push_back({std::string(200, 'W'), "http://127.0.0.1/4.pls"});
  for (int i = 5; i < 40; ++i)
    list.push_back({"Station " + std::to_string(i), "http://127.0.0.1/"});
  return list;
}

void runFor(int seconds) {
  const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(seconds) * 1000;
  while (GetTickCount64() < end && window::dispatchPending()) Sleep(10);
}

void CALLBACK endOfShow(HWND, UINT, UINT_PTR, DWORD) {
  PostQuitMessage(0);
}

}  // namespace

int main(int count, char** arguments) {
  const std::string name = count > 1 ? arguments[1] : "reload";
  const int seconds = count > 2 ? std::atoi(arguments[2]) : 5;
  app::Captions captions;
  app::Messages messages;
  if (count > 3 && std::strcmp(arguments[3], "german") == 0) makeGerman(captions, messages);
  if (name == "reload" || name == "aborted") {
    dialogs::ReloadForm form(captions, messages, [] {});
    form.show();
    form.progress("Loading Data for Dance and House", 5, 19);
    if (name == "aborted") PostMessageW(form.handle(), WM_COMMAND, IDCANCEL, 0);
    runFor(seconds);
    return 0;
  }
  SetTimer(nullptr, 0, static_cast<UINT>(seconds) * 1000, endOfShow);
  if (name == "search") (void)dialogs::SearchForm(captions, nullptr, "night jazz").ask();
  if (name == "favourites")
    (void)dialogs::EditFavs(captions, nullptr, captions.get("editfavs.Caption"), favourites())
        .edit();
  if (name == "add") (void)dialogs::Form5(captions, nullptr).ask();
  if (name == "edit")
    (void)dialogs::Form6(captions, nullptr, {"Mein Sender", "http://127.0.0.1:8000/live"}).ask();
  return 0;
}
