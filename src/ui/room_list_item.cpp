#include "ui/room_list_item.h"

#include <QTreeWidget>

QRoomListItemWidget::QRoomListItemWidget() {
    setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
}

void QRoomListItemWidget::setData(int i_column, int i_role, const QVariant& i_value) {
    if (i_role == Qt::DisplayRole && i_column == 0) {
        m_foldedName = i_value.toString().toCaseFolded();
    } else if (i_role == Qt::DisplayRole && i_column == 1) {
        m_userCount = i_value.toString().toInt();
    }
    QTreeWidgetItem::setData(i_column, i_role, i_value);
}

bool QRoomListItemWidget::operator<(const QTreeWidgetItem& i_other) const {
    const auto& l_other = static_cast<const QRoomListItemWidget&>(i_other);
    if (!treeWidget() || treeWidget()->sortColumn() == 0) {
        return m_foldedName < l_other.m_foldedName;
    }
    return m_userCount < l_other.m_userCount;
}
