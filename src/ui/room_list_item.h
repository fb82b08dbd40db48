#pragma once

#include <QTreeWidgetItem>

// A row of the room list: sorts by name without regard to case, and by number in the column of users.
class QRoomListItemWidget : public QTreeWidgetItem {
public:
    explicit QRoomListItemWidget(QTreeWidget* ip_list);

    bool operator<(const QTreeWidgetItem& i_other) const override;
};
