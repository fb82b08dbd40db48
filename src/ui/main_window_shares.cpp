// The shared folders: their rows, and what the user does with them.
#include "ui/main_window.h"

#include "app/settings.h"
#include "app/text.h"
#include "sharing/shared_folders_manager.h"
#include "ui/add_shared_folder_dialog.h"
#include "ui/display_text.h"
#include "ui/folder_chooser.h"
#include "ui/main_window_layout.h"
#include "ui/row_name.h"
#include "ui/shared_files_rescanned_dialog.h"

#include <QLineEdit>
#include <QTreeWidget>

#include <vector>

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

void MainWindow::ShareFolder() {
    (new AddSharedFolderDialog(this))->show();
}

void MainWindow::UnshareSelectedFolders() {
    std::vector<std::string> l_folders; // the rows go while this works
    for (const QTreeWidgetItem* lp_row : mp_layout->sharedFoldersList->selectedItems()) {
        l_folders.push_back(RowName(*lp_row));
    }
    for (const std::string& l_folder : l_folders) {
        sharedFoldersManager->UnshareFolder(l_folder);
    }
}

void MainWindow::ChooseDownloadFolder() {
    ChooseFolder(this, tr("Set Download Folder"), ToQString(SettingText("download_folder")),
                 [this](const QString& i_path) {
                     SetSetting("download_folder", ToUtf8(i_path));
                     mp_layout->downloadFolderEdit->setText(CellText(ToUtf8(i_path)));
                 });
}

void MainWindow::OnSharedFolderAdded(Item* ip_folder) {
    QTreeWidgetItem* const lp_row = new QTreeWidgetItem(mp_layout->sharedFoldersList);
    lp_row->setText(0, CellText(ip_folder->AsView()));
    SetRowName(*lp_row, ip_folder->AsView());
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

void MainWindow::OnSharedFilesRescanned(int i_added, int i_removed) {
    SharedFilesRescannedDialog* const lp_dialog = new SharedFilesRescannedDialog(this);
    lp_dialog->Append(tr("%1 files added.").arg(i_added));
    lp_dialog->Append(tr("%1 files removed.").arg(i_removed));
    lp_dialog->show();
}
