// The keys that work everywhere in the window: Ctrl+1 and on turn to the pages, F6 and Shift+F6 walk from pane to pane
// (tool bars, tabs, and what a page is divided into), F10 opens the menu, and the desktop's key for it ends the
// program.
#pragma once

#include <QList>

class QMainWindow;
class QTabWidget;
class QWidget;

// The objects that do it are children of the window.
void AddWindowKeys(QMainWindow* ip_window, QTabWidget* ip_pages);

// The panes at this moment, in the order in which F6 comes by. Each takes the focus, or has something in it that does.
QList<QWidget*> Panes(QMainWindow* ip_window, QTabWidget* ip_pages);

// What gets the focus when it comes to the pane: what had it last, or else the first that can have it.
QWidget* FocusOf(QWidget* ip_pane);
