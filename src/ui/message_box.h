#pragma once

class QMessageBox;
class QString;
class QWidget;

// Opens an information box over the parent's window and returns at once: nobody waits for the user. The box shows its
// texts as plain text and frees itself when it is closed; until then it may be used to hear of that.
QMessageBox* OpenMessage(QWidget* ip_parent, const QString& i_title, const QString& i_text);
