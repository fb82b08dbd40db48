#pragma once

#include <QLabel>

class QTabWidget;

// A sentence in the middle of a tab widget that has no tabs. Belongs to the tab widget, follows its tabs and its size,
// and takes no clicks.
class EmptyTabsHint : public QLabel {
    Q_OBJECT

public:
    EmptyTabsHint(QTabWidget* ip_tabs, const QString& i_sentence);

    bool eventFilter(QObject* ip_watched, QEvent* ip_event) override;

private:
    void Update();

    QTabWidget* mp_tabs;
};
