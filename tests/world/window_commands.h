// What a person does in the window, as commands of the driven client. Widgets go by their object name; of several with
// one name the last that opened counts.
#pragma once

#include <QJsonValue>

#include <functional>
#include <map>
#include <string>
#include <vector>

using Arguments = std::vector<std::string>; // the command and its words
using Commands = std::map<std::string, std::function<QJsonValue(const Arguments&)>>;

// action ID              the tool bar's
// userMenu USER ENTRY    whether the user's menu has it; if so it is chosen
// rows TREE              its top-level rows, each an array of the cells' texts
// text EDIT              what stands in the line
// type EDIT TEXT         in place of what stood there, then Return
// turn WIDGET            clicks the tabs that it lies behind
// press KEYS             "Return", "Ctrl+D": to the widget with the focus
// button TEXT            clicks the tool bar's; whether there is one
// row TREE TEXT...       the row under rows of these texts, an object of cells, colour, and what a screen reader is told
//                        beside the cells; null if there is none on show
// click TREE TEXT...     clicks that row; whether there is one
// check LIST TEXT        the row with the text
// choose LIST TEXT       makes it the current row
// spin BOX NUMBER
// closeDialogs
void AddWindowCommands(Commands& io_commands);
