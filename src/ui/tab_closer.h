#pragma once

#include <QObject>

class QTabWidget;

// A click with the middle button on a tab asks for its closing, as its close button does. Belongs to the tab widget.
class TabCloser : public QObject {
    Q_OBJECT

public:
    explicit TabCloser(QTabWidget* ip_tabs);

    bool eventFilter(QObject* ip_watched, QEvent* ip_event) override;

private:
    QTabWidget* mp_tabs;
};
