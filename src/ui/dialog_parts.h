// What the dialogs are put together from.
#pragma once

#include <QDialogButtonBox>
#include <QLineEdit>
#include <QString>

class QDialog;

// Wide enough for a host name or a path's beginning, with its text selected by the first Tab into it.
QLineEdit* NewLineEdit(const char* ip_objectName, const QString& i_text);

// "OK" and "Cancel", which call the dialog's accept() and reject().
QDialogButtonBox* NewButtonBox(QDialog* ip_dialog);
