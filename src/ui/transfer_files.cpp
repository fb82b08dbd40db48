#include "ui/transfer_files.h"

#include "app/text.h"
#include "transfers/local_paths.h"
#include "transfers/transfer_queue_manager.h"
#include "ui/display_text.h"
#include "ui/transfer_row.h"
#include "ui/transfer_types.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QFileInfo>
#include <QStringList>
#include <QUrl>

namespace {

QString Path(ItemPtr i_entry, bool i_complete) {
    return ToFileSystemForm(transferQueueManager->GetDownloadTargetPath(i_entry, i_complete));
}

QString Text(const char* ip_text) {
    return QCoreApplication::translate("TransferToolTip", ip_text);
}

// Foreign text as part of a tip that is markup.
QString Escaped(std::string_view i_text) {
    return CellText(i_text).toHtmlEscaped();
}

} // namespace

// A file that has been moved leaves nothing behind; a partial file of another download under the same name is shorter.
QString StayedFile(ItemPtr i_entry) {
    if (TransferStatus(c_downloadTypes, i_entry) != "complete") {
        return QString();
    }
    const QFileInfo l_file(Path(i_entry, false));
    const bool l_isWhole = l_file.isFile() && l_file.size() == TransferSize(c_downloadTypes, i_entry);
    return l_isWhole ? l_file.filePath() : QString();
}

QString FinishedFile(ItemPtr i_entry) {
    const QString l_stayed = StayedFile(i_entry);
    if (!l_stayed.isEmpty() || TransferStatus(c_downloadTypes, i_entry) != "complete") {
        return l_stayed;
    }
    const QString l_path = Path(i_entry, true);
    return QFileInfo(l_path).isFile() ? l_path : QString();
}

QString FolderToOpen(ItemPtr i_entry) {
    const QString l_file = FinishedFile(i_entry);
    const bool l_isComplete = TransferStatus(c_downloadTypes, i_entry) == "complete";
    QString l_folder = (l_file.isEmpty() ? Path(i_entry, l_isComplete) : l_file).section(u'/', 0, -2);
    while (!l_folder.isEmpty() && !QFileInfo(l_folder).isDir()) {
        l_folder = l_folder.section(u'/', 0, -2);
    }
    return l_folder;
}

bool OpenOnDesktop(const QString& i_path) {
    return !i_path.isEmpty() && QDesktopServices::openUrl(QUrl::fromLocalFile(i_path));
}

QString TransferToolTip(const TransferTypes& i_types, const TransferRow* ip_row, int i_column) {
    QStringList l_lines;
    const ItemPtr l_entry = RowEntry(i_types, ip_row);
    if (l_entry) {
        l_lines += Escaped(TransferFileName(i_types, l_entry).AsView());
        const QString l_stayed = i_types.file ? QString() : StayedFile(l_entry);
        if (!l_stayed.isEmpty()) {
            l_lines += Text("A file of that name was there before, so this one stays at:");
            l_lines += Escaped(ToUtf8(l_stayed));
        }
    } else if (ip_row->type() == TransferRow::FolderLevel) {
        const ItemPtr l_node = d.GetType(i_types.folderNode)->HasItem(ip_row);
        l_lines += Escaped(l_node[i_types.folder].AsView());
    } else {
        l_lines += Escaped(RowUser(i_types, ip_row).AsView());
    }
    if (i_column == transfer_column::Status || i_column == transfer_column::Rate) {
        l_lines += ip_row->text(i_column).toHtmlEscaped();
    }
    l_lines.removeAll(QString());
    return l_lines.isEmpty() ? QString() : QStringLiteral("<qt>%1</qt>").arg(l_lines.join(QStringLiteral("<br>")));
}
