#include "ui/room_user_list.h"

#include "ui/room_user_list_item.h"
#include "ui/user_menu_options.h"

#include <QHeaderView>

namespace {

// Numbers of the server that a damaged store or message made something else count as none.
long long Number(ItemPtr i_user, const char* ip_type) {
    return i_user.HasItem(ip_type).ToInt64().value_or(0);
}

} // namespace

RoomUserList::RoomUserList(QWidget* ip_parent) : QTreeWidget(ip_parent) {
    setObjectName(QStringLiteral("userList"));
    setAccessibleName(tr("Users in this room"));
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setIconSize(QSize(16, 11));
    setHeaderLabels({QString(), QString(), tr("User"), tr("Files"), tr("K/s")});
    headerItem()->setToolTip(QRoomUserListItemWidget::Flag, tr("Country"));
    const int l_widths[] = {20, 25, 90, 50, 40};
    for (int l_column = 0; l_column < QRoomUserListItemWidget::ColumnCount; ++l_column) {
        setColumnWidth(l_column, l_widths[l_column]);
    }
    header()->setStretchLastSection(true);
    setSortingEnabled(true);
    sortByColumn(QRoomUserListItemWidget::User, Qt::AscendingOrder);
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect(this, &QWidget::customContextMenuRequested, this, &RoomUserList::OnContextMenuRequested);
}

void RoomUserList::ShowUser(ItemPtr i_user) {
    QRoomUserListItemWidget*& lp_row = m_rows[i_user.AsString()];
    const bool l_isNew = !lp_row;
    if (l_isNew) {
        lp_row = new QRoomUserListItemWidget(i_user.AsView());
    }
    lp_row->Show(i_user.HasItem("country_code").AsView(), Number(i_user, "shared_files_count"),
                 Number(i_user, "average_download_speed"));
    if (l_isNew) {
        addTopLevelItem(lp_row);
    }
}

void RoomUserList::RemoveUser(std::string_view i_name) {
    const auto l_found = m_rows.find(std::string(i_name));
    if (l_found != m_rows.end()) {
        delete l_found->second;
        m_rows.erase(l_found);
    }
}

std::vector<std::string_view> RoomUserList::Names() const {
    std::vector<std::string_view> l_names;
    l_names.reserve(m_rows.size());
    for (const auto& [l_name, lp_row] : m_rows) {
        l_names.push_back(l_name);
    }
    return l_names;
}

void RoomUserList::OnContextMenuRequested(const QPoint& i_point) {
    if (const QTreeWidgetItem* const lp_row = itemAt(i_point)) {
        OpenUserMenu(static_cast<const QRoomUserListItemWidget*>(lp_row)->Name(), viewport()->mapToGlobal(i_point),
                     this);
    }
}
