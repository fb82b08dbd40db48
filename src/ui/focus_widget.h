#pragma once

class QWidget;

// Activates the widget's window, gives the widget the focus, and selects, in each QTabWidget around it, the tab on
// whose page it lies. One operation under two names.
void FocusWidget(QWidget* ip_widget);
void FocusWidgetAndParents(QWidget* ip_widget);
