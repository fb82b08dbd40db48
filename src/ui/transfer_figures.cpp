// The figures of running transfers. The workers report every block, thousands of times a second; what is shown follows
// at a pace that the eye can use. The last report before a transfer ends is always painted.
#include "ui/transfer_list.h"

#include "ui/transfer_text.h"
#include "ui/transfer_tree.h"

#include <utility>

void TransferList::OnProgress(ItemPtr i_entry) {
    if (!RowOf(i_entry)) {
        return;
    }
    m_unpainted.insert(i_entry.Get());
    if (!m_paintTimer.isActive()) {
        PaintFigures();
    }
}

void TransferList::PaintFigures() {
    const absl::btree_set<Item*> l_entries = std::exchange(m_unpainted, {});
    if (l_entries.empty()) {
        return;
    }
    m_paintTimer.start();
    for (Item* const lp_entry : l_entries) {
        PaintFigures(lp_entry);
    }
}

void TransferList::PaintFigures(ItemPtr i_entry) {
    TransferRow* const lp_row = RowOf(i_entry);
    TransferRow* const lp_folder = lp_row->Above();
    TransferRow* const lp_user = lp_folder->Above();
    const long long l_position = TransferPosition(m_types, i_entry);
    const long long l_size = TransferSize(m_types, i_entry);
    const int l_rate = TransferRate(i_entry);

    lp_row->setText(transfer_column::TimeLeft, TimeLeftText(SecondsLeft(l_size - l_position, l_rate)));
    mp_tree->ShowProgress(lp_row, l_position, l_size);

    TransferRow* const lp_deepest = !lp_user->isExpanded() ? lp_user : !lp_folder->isExpanded() ? lp_folder : lp_row;
    lp_deepest->setText(transfer_column::Rate, RateText(l_rate));
    PaintSum(lp_user, l_rate);
    PaintSum(lp_folder, l_rate);
}

// Of all that lies below a user or a folder, unless the one row below it tells the same.
void TransferList::PaintSum(TransferRow* ip_row, int i_rate) {
    if (ip_row->isExpanded() && ip_row->childCount() < 2) {
        return;
    }
    const ProgressStats l_stats = GetProgressStats(m_types, EntriesBelow(m_types, ip_row));
    if (l_stats.total != 0) {
        ip_row->setText(transfer_column::TimeLeft, TimeLeftText(SecondsLeft(l_stats.remaining, i_rate)));
        mp_tree->ShowProgress(ip_row, l_stats.done, l_stats.total);
    }
}
