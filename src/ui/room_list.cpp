#include "ui/room_list.h"

#include "ui/display_text.h"
#include "ui/room_list_item.h"
#include "ui/row_name.h"

#include <QHeaderView>
#include <QTreeWidget>

RoomList::RoomList(QTreeWidget* ip_tree) : mp_tree(ip_tree) {
    mp_tree->setHeaderLabels({tr("Room Name"), tr("Users")});
    mp_tree->setColumnWidth(0, 150);
    mp_tree->setColumnWidth(1, 30);
    mp_tree->sortByColumn(0, Qt::AscendingOrder);
    m_showTimer.setSingleShot(true);
    connect(&m_showTimer, &QTimer::timeout, this, &RoomList::ShowChanges);
}

void RoomList::SetUserCount(std::string_view i_room, std::string_view i_count) {
    m_changes.insert_or_assign(std::string(i_room), std::string(i_count));
    if (!m_showTimer.isActive()) {
        m_showTimer.start(0);
    }
}

void RoomList::ShowChanges() {
    QList<QTreeWidgetItem*> l_newRows;
    mp_tree->setSortingEnabled(false);
    for (const auto& [l_room, l_count] : m_changes) {
        QTreeWidgetItem*& lp_row = m_rows[l_room];
        if (!lp_row) {
            lp_row = new QRoomListItemWidget;
            lp_row->setText(0, CellText(l_room));
            SetRowName(*lp_row, l_room);
            l_newRows.append(lp_row);
        }
        lp_row->setText(1, CellText(l_count));
    }
    m_changes.clear();
    mp_tree->addTopLevelItems(l_newRows);
    mp_tree->setSortingEnabled(true);
}

std::string RoomList::SelectedRoom() const {
    const QList<QTreeWidgetItem*> l_rows = mp_tree->selectedItems();
    return l_rows.isEmpty() ? std::string() : RowName(*l_rows.first());
}
