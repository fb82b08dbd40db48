#include "ui/share_rows.h"

#include "app/text.h"
#include "sharing/shared_folders_manager.h"
#include "ui/display_text.h"

#include <QTreeWidget>

#include <algorithm>

namespace {

QVariant NameTip(const QTreeWidgetItem& i_row) {
    return ToolTipText(ToUtf8(i_row.text(0)));
}

} // namespace

ShareFolderRow::ShareFolderRow(std::string_view i_name, int i_depth)
    : m_depth(i_depth), m_foldedName(FoldCase(i_name)) {
    setText(0, CellText(i_name));
}

QVariant ShareFolderRow::data(int i_column, int i_role) const {
    return i_role == Qt::ToolTipRole ? NameTip(*this) : QTreeWidgetItem::data(i_column, i_role);
}

ShareFileRow::ShareFileRow(ItemPtr i_file) : m_bytes(ShareFileSize(i_file)) {
    setText(Name, CellText(i_file["user_share_file_name"].AsView()));
    setText(Size, CommafyNumber(m_bytes));
    setTextAlignment(Size, Qt::AlignRight | Qt::AlignVCenter);
    setText(Attributes, sharedFoldersManager->GetFileItemDisplayString(i_file));
}

QVariant ShareFileRow::data(int i_column, int i_role) const {
    return i_role == Qt::ToolTipRole ? NameTip(*this) : QTreeWidgetItem::data(i_column, i_role);
}

bool ShareFileRow::operator<(const QTreeWidgetItem& i_other) const {
    const int l_column = treeWidget() ? treeWidget()->sortColumn() : Name;
    if (l_column == Size) {
        return m_bytes < static_cast<const ShareFileRow&>(i_other).m_bytes;
    }
    return text(l_column).compare(i_other.text(l_column), Qt::CaseInsensitive) < 0;
}

long long ShareFileSize(ItemPtr i_file) {
    return std::max(0LL, i_file["user_share_file_size"].ToInt64().value_or(0));
}

ItemPtr FolderOfRow(const QTreeWidgetItem* ip_row) {
    return d.GetType("user_share_folder_node")->HasItem(ip_row)["user_share_folder"];
}

ItemPtr FileOfRow(const QTreeWidgetItem* ip_row) {
    return d.GetType("user_share_file_node")->HasItem(ip_row)["user_share_file"];
}
