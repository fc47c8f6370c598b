#include "app/captions.h"

namespace app {

Captions::Texts englishCaptions() {
  return {
      // Splash window and language chooser.
      {"splash.Label1", "Loading Program - Please Wait"},
      {"Form4.Caption", "Kestrel"},
      {"Form4.Frame1", "First Start"},
      {"Form4.Label1", "You can find the Program on the Systray!"},
      {"Form4.Frame2", "Select your Language"},
      {"Form4.Label2", "Kestrel"},
      {"Form4.Command1", "OK"},

      // Settings dialog; Label2 is the author of the language file.
      {"Form2.Caption", "Kestrel Settings"},
      {"Form2.List2(0)", "Program Settings"},
      {"Form2.List2(1)", "Player Settings"},
      {"Form2.List2(2)", "Genre Selection"},
      {"Form2.List2(3)", "Own Entrys"},
      {"Form2.List2(4)", "Systray Settings!"},
      {"Form2.Frame3", "Program Settings"},
      {"Form2.Check1", "Show Splashscreen"},
      {"Form2.Check2", "Show \"Reload all\" Window"},
      {"Form2.Check4", "Reload on Startup"},
      {"Form2.Check3", "Launch at Windows Startup"},
      {"Form2.Label7", "Maximum No. of Entrys"},
      {"Form2.Label3", "Maximum line length"},
      {"Form2.Frame1", "Language"},
      {"Form2.Label2", ""},
      {"Form2.Frame4", "Player Settings"},
      {"Form2.Option1(0)", "Use Default Player"},
      {"Form2.Option1(1)", "Select Player:"},
      {"Form2.Option1(2)", "Use Internal Player"},
      {"Form2.Label12", "(use \"%1\" for File Usage"},
      {"Form2.Check5", "Show Player on Startup"},
      {"Form2.Frame2", "Visible Genre"},
      {"Form2.Command1", "Select all"},
      {"Form2.Command2", "Select None"},
      {"Form2.Frame5", "Own Entrys"},
      {"Form2.ListView1(0)", "Title"},
      {"Form2.ListView1(1)", "URL"},
      {"Form2.Command6", "New Entry"},
      {"Form2.Command7", "Remove"},
      {"Form2.Command8", "Edit Entry"},
      {"Form2.Frame6", "Systray Icon Settings"},
      {"Form2.Label4", "Left Mousebutton"},
      {"Form2.Label5", "Right Mousebutton"},
      {"Form2.Combo1(0)", "Open Mainmenu"},
      {"Form2.Combo1(1)", "Open Genremenu"},
      {"Form2.Combo1(2)", "Open Playermenu!"},
      {"Form2.Combo2(0)", "Open Mainmenu"},
      {"Form2.Combo2(1)", "Open Genremenu"},
      {"Form2.Combo2(2)", "Open Playermenu!"},
      {"Form2.Label6", "Normal Icon"},
      {"Form2.Label9", "Working Icon"},
      {"Form2.Text4", "not yet"},
      {"Form2.Text5", "not yet"},
      {"Form2.Command3", "OK"},
      {"Form2.Command4", "Cancel"},

      // Add and edit an own entry.
      {"Form5.Caption", "Add Own Entry"},
      {"Form5.Label1", "Title"},
      {"Form5.Label2", "Stream URL"},
      {"Form5.Command1", "OK"},
      {"Form5.Command2", "Cancel"},
      {"Form6.Caption", "Edit Entry"},
      {"Form6.Label1", "Title"},
      {"Form6.Label2", "Stream URL"},
      {"Form6.Command1", "OK"},
      {"Form6.Command2", "Cancel"},

      // Favourites organiser.
      {"editfavs.Caption", "Organize Favorites"},
      {"editfavs.ListView1(0)", "Name"},
      {"editfavs.Command1", "Remove"},
      {"editfavs.Command2", "OK"},
      {"editfavs.Command3", "Cancel"},

      // Search; Label3 is its search button.
      {"searchform.Label2", "Search for..."},
      {"searchform.Label3", "Search"},
      {"searchform.Label5", "Cancel"},

      // Reload of all genres.
      {"reloadform.Label1", "Reload Entrys for all Genres"},
      {"reloadform.Label4", "Cancel"},

      // About box.
      {"Form3.Label2", "OK"},
      {"Form3.Label4", "Updates"},
      {"Form3.Label7", "Donate"},
      {"Form3.Text1",
       "Kestrel is freeware.\r\n"
       "It is completely free for anybody to use, without any limitations.\r\n"
       "It is owned completely by its author (the Kestrel project).\r\n"
       "The author does not authorize its sale, and it may be freely distributed without "
       "royalty as long as it is distributed unchanged, as released.\r\n"
       "The author provides it as is and makes no warranty about it."},

      // Player window.
      {"frmNetRadio.subontop", "On Top"},
      {"frmNetRadio.submini", "Minimize"},
  };
}

}  // namespace app
