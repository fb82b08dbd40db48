#include "ui/transfer_tree.h"

#include "ui/transfer_row.h"
#include "ui/transfer_text.h"

#include <QHeaderView>
#include <QProgressBar>
#include <QTreeWidgetItemIterator>

namespace {

constexpr int c_barHeight = 14;
constexpr int c_widths[] = {100, 125, 125, 100, 140, 80, 40, 90, 40};

} // namespace

TransferTree::TransferTree(const QString& i_name, int i_columns) {
    setObjectName(i_name);
    const QStringList l_labels = {tr("User"),   tr("Folder"), tr("File"), tr("Status"), tr("Progress"),
                                  tr("   ETA"), tr("Kbs"),    tr("Size"), tr("Place")};
    setHeaderLabels(l_labels.mid(0, i_columns));
    for (int l_column = 0; l_column < i_columns; ++l_column) {
        setColumnWidth(l_column, c_widths[l_column]);
    }
    for (const int l_column : {transfer_column::Rate, transfer_column::Size, transfer_column::Place}) {
        if (l_column < i_columns) {
            headerItem()->setTextAlignment(l_column, Qt::AlignRight | Qt::AlignVCenter);
        }
    }
    header()->setSectionsMovable(false);
    header()->setStretchLastSection(false);
    setContextMenuPolicy(Qt::CustomContextMenu);
    setSelectionMode(ExtendedSelection);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setItemDelegate(new TransferDelegate(this));
}

void TransferTree::ShowProgress(TransferRow* ip_row, long long i_position, long long i_whole) {
    QProgressBar* lp_bar = qobject_cast<QProgressBar*>(itemWidget(ip_row, transfer_column::Progress));
    if (!lp_bar) {
        lp_bar = new QProgressBar;
        lp_bar->setMaximumHeight(c_barHeight);
        lp_bar->setAttribute(Qt::WA_TransparentForMouseEvents);
        const auto l_column = ip_row->IsFile()                             ? transfer_column::File
                              : ip_row->type() == TransferRow::FolderLevel ? transfer_column::Folder
                                                                           : transfer_column::User;
        lp_bar->setAccessibleName(tr("Progress of %1").arg(ip_row->text(l_column)));
        setItemWidget(ip_row, transfer_column::Progress, lp_bar);
    }
    const double l_percentage = Percentage(i_position, i_whole);
    const QString l_text = ProgressText(i_position, l_percentage);
    lp_bar->setFormat(l_text);
    lp_bar->setValue(static_cast<int>(l_percentage));
    ip_row->SetProgressText(l_text);
}

void TransferTree::RemoveProgress(TransferRow* ip_row) {
    if (QWidget* const lp_bar = itemWidget(ip_row, transfer_column::Progress)) {
        lp_bar->deleteLater();
        removeItemWidget(ip_row, transfer_column::Progress);
    }
    ip_row->SetProgressText(QString());
}

QList<QTreeWidgetItem*> TransferTree::SelectedInOrder() const {
    QList<QTreeWidgetItem*> l_rows;
    for (QTreeWidgetItemIterator l_row(const_cast<TransferTree*>(this), QTreeWidgetItemIterator::Selected); *l_row;
         ++l_row) {
        l_rows += *l_row;
    }
    return l_rows;
}

void TransferDelegate::updateEditorGeometry(QWidget* ip_editor, const QStyleOptionViewItem& i_option,
                                            const QModelIndex&) const {
    const int l_height = qMin(i_option.rect.height(), ip_editor->maximumHeight());
    QRect l_rect = i_option.rect;
    l_rect.setHeight(l_height);
    l_rect.moveTop(i_option.rect.top() + (i_option.rect.height() - l_height) / 2);
    ip_editor->setGeometry(l_rect);
}
