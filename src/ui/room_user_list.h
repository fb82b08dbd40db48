// The list of a room's users. Its rows are kept by the names that the store has, never by what is shown of them.
#pragma once

#include <QTreeWidget>

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "store/item.h"

class QRoomUserListItemWidget;

class RoomUserList : public QTreeWidget {
    Q_OBJECT

public:
    explicit RoomUserList(QWidget* ip_parent);

    // Shows the user's attributes as the store has them now, in a new row or in the one that is there.
    void ShowUser(ItemPtr i_user);
    void RemoveUser(std::string_view i_name); // who need not be there

    std::vector<std::string_view> Names() const; // until the next change

private:
    void OnContextMenuRequested(const QPoint& i_point);

    std::unordered_map<std::string, QRoomUserListItemWidget*> m_rows;
};
