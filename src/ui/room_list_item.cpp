#include "ui/room_list_item.h"

#include <QTreeWidget>

QRoomListItemWidget::QRoomListItemWidget(QTreeWidget* ip_list) : QTreeWidgetItem(ip_list) {
    setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
}

bool QRoomListItemWidget::operator<(const QTreeWidgetItem& i_other) const {
    const int l_column = treeWidget() ? treeWidget()->sortColumn() : 0;
    if (l_column == 0) {
        return text(0).compare(i_other.text(0), Qt::CaseInsensitive) < 0;
    }
    return text(1).toInt() < i_other.text(1).toInt();
}
