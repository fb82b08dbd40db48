#include "ui/transfer_counts.h"

#include "ui/transfer_list.h"
#include "ui/transfer_text.h"
#include "ui/transfer_tree.h"

#include <QLabel>

TransferCounts::TransferCounts(const TransferList& i_list, QLabel* ip_label)
    : QObject(ip_label), m_list(i_list), mp_label(ip_label) {
    m_soon.setSingleShot(true);
    const auto l_soon = [this] { m_soon.start(0); };
    connect(&m_soon, &QTimer::timeout, this, &TransferCounts::Show);
    connect(&i_list, &TransferList::RowsChanged, this, l_soon);
    connect(i_list.Tree(), &QTreeWidget::itemSelectionChanged, this, l_soon);
    l_soon();
}

void TransferCounts::Show() {
    QString l_text = FileCountText(static_cast<long long>(d.GetType(m_list.Types().fileNode)->CountItems()));
    const ItemSet l_selected = m_list.SelectedEntries();
    if (!l_selected.empty()) {
        long long l_bytes = 0;
        for (Item* const lp_entry : l_selected) {
            l_bytes = AddBytes(l_bytes, TransferSize(m_list.Types(), lp_entry));
        }
        l_text =
            tr("%1; selected: %2").arg(l_text, FilesAndBytesText(static_cast<long long>(l_selected.size()), l_bytes));
    }
    mp_label->setText(l_text);
}
