#include "ui/transfer_actions.h"

#include "app/text.h"
#include "net/limits.h"
#include "transfers/transfer_queue_manager.h"
#include "ui/display_text.h"
#include "ui/transfer_files.h"
#include "ui/transfer_list.h"
#include "ui/transfer_tree.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QSet>
#include <QStringList>

#include <string>
#include <utility>
#include <vector>

namespace {

// More windows than this at one click are a mistake.
constexpr qsizetype c_mostOpened = 10;

// A path from the wire has no more; all of it is wanted on the clipboard.
constexpr int c_longestName = static_cast<int>(limits::textLengthOrCount);

std::vector<Item*> InOrder(const ItemSet& i_entries) {
    return i_entries.SortNumericBy("download_order", true);
}

struct Wish {
    std::string user;
    std::string fileName;
    std::string folder;
    long long size;
    int level;
};

Wish WishOf(ItemPtr i_entry) {
    constexpr long long l_deepest = 64; // what local folders have at most
    const long long l_level = i_entry["subfolder_save_level"].ToInt64().value_or(0);
    return {i_entry["user"].AsString(), i_entry["file_name"].AsString(), i_entry["remote_folder"].AsString(),
            i_entry["file_size"].ToInt64().value_or(0), static_cast<int>(qBound(0LL, l_level, l_deepest))};
}

// Selected rows by the entries that they stand for. A removal may take rows along, so no row is looked at afterwards.
ItemSet EntriesToRetry(const TransferList& i_list) {
    ItemSet l_entries;
    for (const QTreeWidgetItem* const lp_row : i_list.Tree()->selectedItems()) {
        const bool l_isFile = static_cast<const TransferRow*>(lp_row)->IsFile();
        for (Item* const lp_entry : EntriesBelow(i_list.Types(), lp_row)) {
            const std::string_view l_status = TransferStatus(i_list.Types(), lp_entry);
            if (l_isFile || (l_status != i_list.Types().active && l_status != "complete")) {
                l_entries.insert(lp_entry);
            }
        }
    }
    return l_entries;
}

// One change of the selection instead of one for each row.
void LetGoOfRows(const TransferList& i_list) {
    i_list.Tree()->clearSelection();
    i_list.Tree()->PostponeLayout();
}

QString NameOf(const TransferTypes& i_types, const TransferRow* ip_row) {
    const auto l_node = [&](const char* ip_type) { return d.GetType(ip_type)->HasItem(ip_row); };
    switch (ip_row->type()) {
    case TransferRow::UserLevel:
        return ToQString(l_node(i_types.userNode)["user"].AsView());
    case TransferRow::FolderLevel:
        return ToQString(l_node(i_types.folderNode)[i_types.folder].AsView());
    default:
        return ToQString(TransferFileName(i_types, RowEntry(i_types, ip_row)).AsView());
    }
}

} // namespace

void RemoveSelectedDownloads(const TransferList& i_list) {
    const std::vector<Item*> l_entries = InOrder(i_list.SelectedEntries());
    LetGoOfRows(i_list);
    const Data::Operation l_removing(d);
    for (Item* const lp_entry : l_entries) {
        transferQueueManager->RemoveDownload(lp_entry);
    }
}

void RetrySelectedDownloads(const TransferList& i_list) {
    const std::vector<Item*> l_entries = InOrder(EntriesToRetry(i_list));
    LetGoOfRows(i_list);
    for (Item* const lp_entry : l_entries) {
        const Wish l_wish = WishOf(lp_entry);
        transferQueueManager->RemoveDownload(lp_entry);
        transferQueueManager->AddDownload(l_wish.user, l_wish.fileName, l_wish.folder, l_wish.size, l_wish.level);
    }
}

QString OpenSelectedFiles(const TransferList& i_list) {
    QStringList l_paths;
    for (const QTreeWidgetItem* const lp_row : i_list.Tree()->SelectedInOrder()) {
        if (const ItemPtr l_entry = RowEntry(i_list.Types(), lp_row)) {
            l_paths += FinishedFile(l_entry);
        }
    }
    l_paths.removeAll(QString());
    for (const QString& l_path : l_paths.mid(0, c_mostOpened)) {
        if (!OpenOnDesktop(l_path)) {
            return TransferList::tr("No program was found that opens %1.").arg(LabelText(ToUtf8(l_path)));
        }
    }
    return l_paths.isEmpty() ? TransferList::tr("Only finished files that are still in the download folder can be "
                                                "opened, and none of them is selected.")
                             : QString();
}

QString OpenSelectedFolders(const TransferList& i_list) {
    QStringList l_folders;
    for (Item* const lp_entry : i_list.SelectedEntries().SortNumericBy("download_order", true)) {
        const QString l_folder = FolderToOpen(lp_entry);
        if (!l_folder.isEmpty() && !l_folders.contains(l_folder)) {
            l_folders += l_folder;
        }
        if (l_folders.size() == c_mostOpened) {
            break;
        }
    }
    for (const QString& l_folder : std::as_const(l_folders)) {
        if (!OpenOnDesktop(l_folder)) {
            return TransferList::tr("No program was found that shows folders.");
        }
    }
    return l_folders.isEmpty() ? TransferList::tr("The download folder is not there yet.") : QString();
}

void CopySelectedNames(const TransferList& i_list) {
    QStringList l_names;
    for (const QTreeWidgetItem* const lp_row : i_list.Tree()->SelectedInOrder()) {
        l_names += DisplayText(NameOf(i_list.Types(), static_cast<const TransferRow*>(lp_row)), c_longestName);
    }
    if (!l_names.isEmpty()) {
        QGuiApplication::clipboard()->setText(l_names.join(u'\n'));
    }
}
