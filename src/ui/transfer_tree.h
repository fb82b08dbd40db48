// The widget of a list of transfers: its columns, how it paints, and the progress bars in it. No behaviour.
#pragma once

#include "ui/row_colour.h"

#include <QTreeWidget>

class TransferRow;

class TransferTree : public QTreeWidget {
    Q_OBJECT

public:
    // i_columns: the first so many of transfer_column.
    TransferTree(const QString& i_name, int i_columns);

    // Many rows are about to change: what is on show is arranged once, when the event loop comes round.
    void PostponeLayout() { scheduleDelayedItemsLayout(); }

    // In the row's column of progress; the bar is made if there is none yet.
    void ShowProgress(TransferRow* ip_row, long long i_position, long long i_whole);
    void RemoveProgress(TransferRow* ip_row);

    // From top to bottom, at the cost of a walk over all rows.
    QList<QTreeWidgetItem*> SelectedInOrder() const;
};

// Keeps the bars, which are lower than a row, in the middle of it.
class TransferDelegate : public RowColourDelegate {
    Q_OBJECT

public:
    using RowColourDelegate::RowColourDelegate;

    void updateEditorGeometry(QWidget* ip_editor, const QStyleOptionViewItem& i_option,
                              const QModelIndex& i_index) const override;
};
