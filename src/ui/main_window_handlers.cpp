// What changes in the store shows in the window.
#include "ui/main_window.h"

#include "ui/display_text.h"
#include "ui/main_window_layout.h"
#include "ui/room_list_item.h"

#include <QLineEdit>
#include <QStringList>
#include <QTreeWidget>

namespace {

// Who may see the folder, in the words of the list.
QString AccessText(ItemPtr i_folder) {
    if (i_folder.IsConnected("shared_public")) {
        return MainWindow::tr("Everyone");
    }
    if (i_folder.IsConnected("shared_userlist")) {
        return MainWindow::tr("User List");
    }
    std::string l_names;
    for (const Item* lp_group : i_folder.GetItems("user_list_group").SortAlphabetic(true)) {
        l_names += (l_names.empty() ? "" : ", ") + lp_group->AsString();
    }
    return CellText(l_names);
}

bool IsAccessType(const std::string& i_type) {
    return i_type == "shared_public" || i_type == "shared_userlist" || i_type == "user_list_group";
}

} // namespace

void MainWindow::OnRoomUserCountAdded(ConnectionInfo& i_info) {
    QTreeWidgetItem*& lp_row = m_roomRows[i_info.m_itemFrom->AsString()];
    if (!lp_row) {
        lp_row = new QRoomListItemWidget(mp_layout->roomList);
        lp_row->setText(0, CellText(i_info.m_itemFrom->AsView()));
    }
    lp_row->setText(1, CellText(i_info.m_itemTo->AsView()));
}

void MainWindow::OnSharedFolderAdded(Item* ip_folder) {
    QTreeWidgetItem* const lp_row = new QTreeWidgetItem(mp_layout->sharedFoldersList);
    lp_row->setText(0, CellText(ip_folder->AsView()));
    m_folderRows[ip_folder->AsString()] = lp_row;
}

void MainWindow::OnSharedFolderRemoved(Item* ip_folder) {
    const auto l_found = m_folderRows.find(ip_folder->AsString());
    if (l_found != m_folderRows.end()) {
        delete l_found->second;
        m_folderRows.erase(l_found);
    }
}

// A folder that is being removed has no row any more when its connections go.
void MainWindow::OnSharedFolderChange(ConnectionInfo i_info) {
    const auto l_found = m_folderRows.find(i_info.m_itemFrom->AsString());
    if (l_found != m_folderRows.end() && IsAccessType(i_info.m_itemTo->GetType()->GetName())) {
        l_found->second->setText(1, AccessText(i_info.m_itemFrom));
    }
}

void MainWindow::OnUsernameChanged(Item* ip_setting) {
    mp_layout->usernameEdit->setText(CellText(ItemPtr(ip_setting)["global_value"].AsView()));
}

void MainWindow::OnNewListeningPortChanged(Item* ip_setting) {
    mp_layout->listeningPortEdit->setText(CellText(ItemPtr(ip_setting)["global_value"].AsView()));
}
