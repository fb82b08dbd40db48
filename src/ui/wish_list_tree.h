// The list of saved searches: a box that says whether the search repeats, and its text.
#pragma once

#include <QTreeWidget>

class WishListTree : public QTreeWidget {
    Q_OBJECT

public:
    explicit WishListTree(QWidget* ip_parent);

Q_SIGNALS:
    void RemoveRequested();
    void ToggleRequested();

protected:
    void keyPressEvent(QKeyEvent* ip_event) override;
    void paintEvent(QPaintEvent* ip_event) override;
};
