#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "app/captions.h"
#include "app/paths.h"
#include "menu/menu_tree.h"

namespace app {

/// Every text that a language file can replace.
struct Texts {
  menu::MenuTree& tree;
  Captions& captions;
  Messages& messages;
};

/// Replaces the text of a four-digit id wherever it stands; unknown ids do nothing.
/// A menu entry refuses "-", which would make it a separator.
void replaceText(std::string_view id, const std::string& text, const Texts& texts);

/// Applies the language file of this name, the data folder's or else the program's,
/// and writes its author line.
/// Windows follow through their captions, menus when they open next. What the file
/// leaves out keeps its text: nothing brings the English ones back.
void loadlanguage(std::string_view filename, const Paths& paths, const Texts& texts);

/// Writes the author line ("Form2.Label2") of the language in force. Looks in the
/// data folder only; without the file the line stays.
void readlangauthor(std::string_view language, const Paths& paths, Captions& captions);

/// Splits at each separator (not empty) after taking off a pair of quotes around the
/// whole text. `parts` gets the pieces that are not empty, without blanks around
/// them; returns their number.
int splitclean(std::string_view text, std::string_view separator, std::vector<std::string>& parts);

}  // namespace app
