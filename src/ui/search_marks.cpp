#include "ui/search_marks.h"

#include "app/text.h"
#include "transfers/transfer_queue_manager.h"
#include "ui/display_text.h"
#include "ui/icon.h"

#include <QCoreApplication>

#include <array>

namespace {

ItemPtr DownloadOf(ItemPtr i_result) {
    return transferQueueManager->GetDownloadEntry(i_result["search_results"]["user"].AsString(),
                                                  i_result["search_result_file_name"].AsString(),
                                                  i_result["search_result_file_folder"].AsString());
}

bool IsSharedHere(ItemPtr i_result) {
    const ItemPtr l_name = d.GetType("shared_file_name")->HasItem(i_result["search_result_file_name"].AsView());
    const ItemPtr l_size = d.GetType("shared_file_size")->HasItem(i_result["search_result_file_size"].AsView());
    if (!l_name || !l_size) {
        return false;
    }
    const std::array<Item*, 2> l_both{l_name.Get(), l_size.Get()};
    return d.AnyOfSubset(l_both, "shared_file", [](Item*) { return true; });
}

QString Text(const char* ip_text) {
    return QCoreApplication::translate("SearchMarks", ip_text);
}

} // namespace

FileMark MarkOf(ItemPtr i_result) {
    if (!i_result) {
        return FileMark::None;
    }
    if (const ItemPtr l_entry = DownloadOf(i_result)) {
        return l_entry["download_entry_status"].AsView() == "complete" ? FileMark::Complete : FileMark::Queued;
    }
    return IsSharedHere(i_result) ? FileMark::Shared : FileMark::None;
}

QIcon MarkIcon(FileMark i_mark) {
    switch (i_mark) {
    case FileMark::Queued:
        return LoadIcon(QStringLiteral(":/icons/mark_queued"));
    case FileMark::Complete:
        return LoadIcon(QStringLiteral(":/icons/mark_complete"));
    case FileMark::Shared:
        return LoadIcon(QStringLiteral(":/icons/mark_shared"));
    case FileMark::None:
        break;
    }
    return {};
}

QString MarkText(ItemPtr i_result) {
    switch (MarkOf(i_result)) {
    case FileMark::Queued:
        return Text("In your downloads: %1").arg(LabelText(DownloadOf(i_result)["download_entry_status"].AsView()));
    case FileMark::Complete:
        return Text("You have downloaded this file");
    case FileMark::Shared:
        return Text("You share a file of this name and size");
    case FileMark::None:
        break;
    }
    return {};
}

QString MarkedToolTip(ItemPtr i_result) {
    const QString l_mark = MarkText(i_result);
    const std::string_view l_name = i_result["search_result_file_name"].AsView();
    if (l_mark.isEmpty()) {
        return ToolTipText(l_name);
    }
    return QStringLiteral("<qt>%1<br/><b>%2</b></qt>").arg(CellText(l_name).toHtmlEscaped(), l_mark.toHtmlEscaped());
}
