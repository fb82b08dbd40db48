#include "ui/search_result_list_item.h"

#include "app/text.h"
#include "sharing/shared_folders_manager.h"
#include "store/data.h"
#include "ui/display_text.h"
#include "ui/search_marks.h"

#include <QCoreApplication>
#include <QTreeWidget>

namespace {

constexpr double c_bytesPerKibibyte = 1024;

QVariant Alignment(Qt::Alignment i_alignment) {
    return QVariant(static_cast<int>(i_alignment | Qt::AlignVCenter));
}

ItemPtr ResultOf(const SearchFileRow* ip_row) {
    return d.GetType("search_result_node")->HasItem(ip_row)["search_result"];
}

QString Tr(const char* ip_text) {
    return QCoreApplication::translate("SearchResultListItem", ip_text);
}

// The path as the user wrote it, for the tip of a folder row.
std::string_view PathOf(const SearchFolderRow* ip_row) {
    return d.GetType("search_results_folder_node")->HasItem(ip_row)["search_result_file_folder"].AsView();
}

} // namespace

bool SearchResultListItem::operator<(const QTreeWidgetItem& i_other) const {
    const int l_column = treeWidget() ? treeWidget()->sortColumn() : Free;
    if (type() == FileRow) {
        return static_cast<const SearchFileRow&>(i_other).TheFile().name <
               static_cast<const SearchFileRow*>(this)->TheFile().name;
    }
    if (type() != UserRow || (l_column != Free && l_column != Speed)) {
        return false; // no file name: equal
    }
    const auto& l_this = static_cast<const SearchUserRow&>(*this);
    const auto& l_other = static_cast<const SearchUserRow&>(i_other);
    if (l_column == Free) {
        if (l_this.m_isFree != l_other.m_isFree) {
            return l_other.m_isFree;
        }
        if (!l_this.m_isFree && l_this.m_queue != l_other.m_queue) {
            return l_this.m_queue > l_other.m_queue;
        }
    }
    return l_this.m_speed < l_other.m_speed;
}

SearchUserRow::SearchUserRow(std::string_view i_user, bool i_isFree, std::uint32_t i_queue, std::uint32_t i_speed)
    : SearchResultListItem(UserRow), m_user(CellText(i_user)), m_queue(i_queue), m_isFree(i_isFree) {
    if (i_speed != 0) {
        m_speedText = QString::number(i_speed / c_bytesPerKibibyte, 'f', 1);
    }
    m_speed = m_speedText.toDouble();
}

QVariant SearchUserRow::data(int i_column, int i_role) const {
    if (i_role == Qt::DisplayRole) {
        switch (i_column) {
        case User:
            return m_user;
        case Free:
            return m_isFree ? QStringLiteral("Y") : QString::number(m_queue);
        case Speed:
            return m_speedText;
        default:
            return {};
        }
    }
    if (i_role == Qt::TextAlignmentRole && (i_column == Free || i_column == Speed)) {
        return Alignment(i_column == Free ? Qt::AlignHCenter : Qt::AlignRight);
    }
    if (i_role == Qt::ToolTipRole) {
        switch (i_column) {
        case User:
            return ToolTipText(ToUtf8(m_user));
        case Free:
            return m_isFree ? Tr("An upload would start at once")
                            : Tr("Uploads waiting in line there: %1").arg(m_queue);
        case Speed:
            return m_speedText.isEmpty() ? QVariant() : Tr("%1 KiB a second").arg(m_speedText);
        default:
            break;
        }
    }
    return QTreeWidgetItem::data(i_column, i_role);
}

SearchFolderRow::SearchFolderRow(std::string_view i_folder)
    : SearchResultListItem(FolderRow), m_text(CellText(ReversePathname(i_folder))) {}

QVariant SearchFolderRow::data(int i_column, int i_role) const {
    if (i_column == Folder && i_role == Qt::DisplayRole) {
        return m_text;
    }
    if (i_column == Folder && i_role == Qt::ToolTipRole) {
        return ToolTipText(PathOf(this));
    }
    return QTreeWidgetItem::data(i_column, i_role);
}

QVariant SearchFileRow::data(int i_column, int i_role) const {
    switch (i_role) {
    case Qt::DisplayRole:
        if (i_column == File) {
            return m_file.name;
        }
        if (i_column == Size) {
            return CommafyNumber(m_file.size);
        }
        return i_column == Attributes ? sharedFoldersManager->GetFileItemDisplayString(ResultOf(this)) : QVariant();
    case Qt::TextAlignmentRole:
        return i_column == Size ? Alignment(Qt::AlignRight) : QVariant();
    case Qt::DecorationRole:
        return i_column == File ? MarkIcon(MarkOf(ResultOf(this))) : QVariant();
    case Qt::ToolTipRole:
        return i_column == File ? MarkedToolTip(ResultOf(this)) : QVariant();
    case Qt::AccessibleDescriptionRole:
        return i_column == File ? MarkText(ResultOf(this)) : QVariant();
    default:
        return QTreeWidgetItem::data(i_column, i_role);
    }
}
