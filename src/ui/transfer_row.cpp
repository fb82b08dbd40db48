#include "ui/transfer_row.h"

#include "ui/transfer_files.h"
#include "ui/transfer_types.h"

#include <QBrush>

#include <numeric>

QColor StatusColour(std::string_view i_status) {
    if (i_status == "complete") {
        return QColor(0, 100, 0);
    }
    if (i_status == "downloading" || i_status == "uploading" || i_status == "connecting") {
        return QColor(0, 0, 255);
    }
    if (i_status == "queued") {
        return QColor(51, 102, 255);
    }
    if (i_status == "denied" || i_status == "aborted" || i_status == "local error") {
        return QColor(255, 10, 71);
    }
    return QColor(Qt::black);
}

void TransferRow::SetColourByStatus(std::string_view i_status) {
    const QColor l_colour = StatusColour(i_status);
    if (l_colour != m_colour) {
        m_colour = l_colour;
        emitDataChanged();
    }
}

TransferRow::Kind TransferRow::KindOf(std::string_view i_status) const {
    if (i_status == m_types.active) {
        return Active;
    }
    if (i_status == "queued") {
        return Queued;
    }
    if (i_status == "complete") {
        return Complete;
    }
    if (i_status == "denied") {
        return Denied;
    }
    return i_status == "aborted" ? Aborted : Other;
}

void TransferRow::CountAbove(Kind i_kind, int i_change) {
    if (i_kind == None) {
        return;
    }
    for (TransferRow* lp_row = Above(); lp_row; lp_row = lp_row->Above()) {
        lp_row->m_below[i_kind] += i_change;
    }
}

void TransferRow::CountStatus(std::string_view i_status) {
    const Kind l_kind = KindOf(i_status);
    CountAbove(m_kind, -1);
    CountAbove(l_kind, 1);
    m_kind = l_kind;
}

void TransferRow::UncountStatus() {
    CountAbove(m_kind, -1);
    m_kind = None;
}

std::string_view TransferRow::AggregateStatus() const {
    if (m_below[Active] > 0) {
        return m_types.active;
    }
    if (m_below[Queued] > 0) {
        return "queued";
    }
    const int l_all = std::accumulate(m_below.begin(), m_below.end(), 0);
    if (l_all > 0 && m_below[Complete] == l_all) {
        return "complete";
    }
    if (m_below[Denied] > 0) {
        return "denied";
    }
    return m_below[Aborted] > 0 ? "aborted" : "";
}

QVariant TransferRow::data(int i_column, int i_role) const {
    if (i_role == Qt::ForegroundRole && m_colour.isValid()) {
        return QBrush(m_colour);
    }
    if (i_role == Qt::ToolTipRole) {
        return TransferToolTip(m_types, this, i_column);
    }
    if (i_role == Qt::AccessibleTextRole && i_column == transfer_column::Progress && !m_progressText.isEmpty()) {
        return m_progressText;
    }
    return QTreeWidgetItem::data(i_column, i_role);
}
