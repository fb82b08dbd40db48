// A person's hands: clicks and keys that reach the widgets as those from outside do. The window must be active, so
// that the focus follows clicks and keys find their way.
#pragma once

#include <QStringList>

class QKeySequence;
class QLineEdit;
class QListWidgetItem;
class QMenu;
class QToolBar;
class QTreeWidget;
class QTreeWidgetItem;
class QWidget;

namespace hands {

// Brings the widget's window to the front and comes back when it is active; false if that takes half a minute.
[[nodiscard]] bool Activate(QWidget* ip_widget);

// Clicks the tabs that the widget lies behind, from the window inwards.
void TurnTo(QWidget* ip_widget);

// In the middle of it.
void Click(QWidget* ip_widget);
// Clicks into the line and types, key by key, over what stood in it.
void Type(QLineEdit* ip_edit, const QString& i_text);
// A key or a combination of keys, to the widget or to the one with the focus.
void Press(const QKeySequence& i_keys, QWidget* ip_widget = nullptr);

// Clicks the bar's button that bears the text; false if it has none.
bool ClickButton(const QToolBar* ip_bar, const QString& i_text);

// The row under rows of these texts, from the top down; each text may stand in any column. Null if there is none, or
// if it cannot be seen.
QTreeWidgetItem* FindRow(const QTreeWidget* ip_tree, const QStringList& i_path);
// Scrolls the row into sight and clicks it; with Ctrl held down it joins those selected before.
void ClickRow(QTreeWidgetItem* ip_row, Qt::KeyboardModifiers i_modifiers = Qt::NoModifier);
void ClickRow(QListWidgetItem* ip_row);
// The menu under the right button. Null if none opens.
QMenu* OpenMenu(QTreeWidgetItem* ip_row);
// Clicks the entry of the open menu; false if it has none of that text.
bool Choose(QMenu* ip_menu, const QString& i_text);

} // namespace hands
