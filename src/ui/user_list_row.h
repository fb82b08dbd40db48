#pragma once

#include <QTreeWidget>

// A row of a list of users. Sorts without regard to case.
class UserListRow : public QTreeWidgetItem {
public:
    using QTreeWidgetItem::QTreeWidgetItem;

    bool operator<(const QTreeWidgetItem& i_other) const override {
        const int l_column = treeWidget() ? treeWidget()->sortColumn() : 0;
        return text(l_column).compare(i_other.text(l_column), Qt::CaseInsensitive) < 0;
    }
};
