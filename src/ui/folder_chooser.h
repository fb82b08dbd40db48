#pragma once

#include <functional>

class QString;
class QWidget;

// Opens the file dialog on folders and returns at once; i_chosen is called with the absolute path when the user accepts
// one, unless the parent has gone by then. i_start: the folder that it begins in, or empty.
void ChooseFolder(QWidget* ip_parent, const QString& i_title, const QString& i_start,
                  std::function<void(const QString& i_path)> i_chosen);
