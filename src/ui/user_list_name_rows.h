// Rows that stand for names (of groups, of users) in the lists of the dialogs. A row shows its name made safe to show;
// RowName() answers the name itself.
#pragma once

#include <string_view>

class QListWidget;
class QListWidgetItem;

// No wider than the list: long names end in an ellipsis.
void PrepareNameList(QListWidget* ip_list);
// Puts a row in its alphabetic place, without regard to case. All rows of the list must come from here.
QListWidgetItem* AddNameRow(QListWidget* ip_list, std::string_view i_name);
// Null if there is none.
QListWidgetItem* FindNameRow(const QListWidget* ip_list, std::string_view i_name);
