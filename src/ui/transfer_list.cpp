#include "ui/transfer_list.h"

#include "app/text.h"
#include "ui/display_text.h"
#include "ui/transfer_tree.h"

namespace {

constexpr int c_paintInterval = 100; // milliseconds

TransferRow* Row(QTreeWidgetItem* ip_item) {
    return static_cast<TransferRow*>(ip_item);
}

QString ShownName(ItemPtr i_user, bool i_isOnline) {
    return CellText(i_user.AsView()) + (i_isOnline ? QString() : TransferList::tr(" [offline]"));
}

} // namespace

TransferList::TransferList(const TransferTypes& i_types, TransferTree* ip_tree)
    : QObject(ip_tree), m_types(i_types), mp_tree(ip_tree) {
    m_paintTimer.setSingleShot(true);
    m_paintTimer.setInterval(c_paintInterval);
    connect(&m_paintTimer, &QTimer::timeout, this, [this] { PaintFigures(); });
    connect(mp_tree, &QTreeWidget::itemExpanded, this, &TransferList::OnItemExpanded);
    connect(mp_tree, &QTreeWidget::itemCollapsed, this, &TransferList::OnItemCollapsed);

    CreateTransferNodeTypes(m_types);
    Type* const lp_entry = d.GetType(m_types.entry);
    d.AddConnectionEventHandler(lp_entry, d.GetType(m_types.status), MakeHandler(this, &TransferList::OnStatusChange));
    lp_entry->m_itemRemoved.AddHandler(MakeHandler(this, &TransferList::OnEntryRemoved));
}

TransferRow* TransferList::RowOf(ItemPtr i_entry) const {
    return i_entry[m_types.fileNode].AsPointer<TransferRow>();
}

void TransferList::AddEntry(Item* ip_entry) {
    const ItemPtr l_entry(ip_entry);
    const ItemPtr l_user = l_entry["user"];
    const ItemPtr l_folder = TransferFolder(m_types, l_entry);
    const ItemPtr l_name = TransferFileName(m_types, l_entry);
    if (RowOf(l_entry) || !l_user || !l_folder || !l_name) {
        return;
    }
    TransferRow* const lp_folder = FindOrMakeFolderRow(FindOrMakeUserRow(l_user), l_folder);

    TransferRow* const lp_row = new TransferRow(TransferRow::FileLevel, m_types);
    lp_row->setText(transfer_column::File, CellText(l_name.AsView()));
    lp_row->setText(transfer_column::Size, CommafyNumber(TransferSize(m_types, l_entry)));
    for (const int l_column : {transfer_column::Rate, transfer_column::Size, transfer_column::Place}) {
        lp_row->setTextAlignment(l_column, Qt::AlignRight | Qt::AlignVCenter);
    }
    const ItemPtr l_node = d.GetType(m_types.fileNode)->GetItem(lp_row);
    l_node.Connect(d.GetType(m_types.folderNode)->GetItem(lp_folder));
    l_node.Connect(l_entry);
    lp_folder->addChild(lp_row);

    if (const ItemPtr l_status = l_entry[m_types.status]) {
        ConnectionInfo l_info;
        l_info.m_itemFrom = l_entry.Get();
        l_info.m_itemTo = l_status.Get();
        OnStatusChange(l_info);
    }
    if (l_entry.IsConnected("place_in_line")) {
        ShowPlace(ip_entry);
    }
    Q_EMIT RowsChanged();
}

TransferRow* TransferList::FindOrMakeUserRow(ItemPtr i_user) {
    if (TransferRow* const lp_row = i_user[m_types.userNode].AsPointer<TransferRow>()) {
        return lp_row;
    }
    TransferRow* const lp_row = new TransferRow(TransferRow::UserLevel, m_types);
    i_user.Connect(d.GetType(m_types.userNode)->GetItem(lp_row));
    lp_row->setText(transfer_column::User, ShownName(i_user, !m_types.followsUsers || i_user.IsConnected("is_online")));
    mp_tree->addTopLevelItem(lp_row);
    lp_row->setExpanded(m_expandUsers);
    return lp_row;
}

TransferRow* TransferList::FindOrMakeFolderRow(TransferRow* ip_user, ItemPtr i_folder) {
    const ItemPtr l_user = d.GetType(m_types.userNode)->GetItem(ip_user);
    const ItemSet l_nodes = d.GetItemSubset({l_user.Get(), i_folder.Get()}, m_types.folderNode);
    if (!l_nodes.empty()) {
        return (*l_nodes.begin())->AsPointer<TransferRow>();
    }
    TransferRow* const lp_row = new TransferRow(TransferRow::FolderLevel, m_types);
    lp_row->setText(transfer_column::Folder, CellText(ReversePathname(i_folder.AsView())));
    const ItemPtr l_node = d.GetType(m_types.folderNode)->GetItem(lp_row);
    l_node.Connect(l_user);
    l_node.Connect(i_folder);
    ip_user->addChild(lp_row);
    lp_row->setExpanded(m_expandFolders);
    return lp_row;
}

void TransferList::ShowName(Item* ip_user, bool i_isOnline) {
    if (TransferRow* const lp_row = ItemPtr(ip_user)[m_types.userNode].AsPointer<TransferRow>()) {
        lp_row->setText(transfer_column::User, ShownName(ip_user, i_isOnline));
    }
}

void TransferList::ShowPlace(Item* ip_entry) {
    if (TransferRow* const lp_row = RowOf(ip_entry)) {
        lp_row->setText(transfer_column::Place, CellText(ItemPtr(ip_entry)["place_in_line"].AsView()));
    }
}

void TransferList::OnStatusChange(ConnectionInfo& i_info) {
    const ItemPtr l_entry(i_info.m_itemFrom);
    TransferRow* const lp_row = RowOf(l_entry);
    if (!lp_row) {
        return;
    }
    // The cells of the figures go with the transfer, right after this.
    if (m_unpainted.erase(l_entry.Get()) > 0) {
        PaintFigures(l_entry);
    }
    const std::string_view l_status = ItemPtr(i_info.m_itemTo).AsView();
    lp_row->SetColourByStatus(l_status);
    if (l_status == "complete") {
        Q_EMIT Completed(l_entry);
        mp_tree->RemoveProgress(lp_row);
    }
    if (l_status != m_types.active) {
        ClearFigures(lp_row);
    }
    lp_row->setText(transfer_column::Place, QString());
    const ItemPtr l_reason = l_entry["denial_reason"];
    lp_row->setText(transfer_column::Status,
                    CellText(l_status == "denied" && l_reason ? l_reason.AsView() : l_status).toLower());

    lp_row->CountStatus(l_status);
    ShowAggregate(lp_row->Above());
    ShowAggregate(lp_row->Above()->Above());
}

// What all files below a folder or a user have in common, and what is left of their figures.
void TransferList::ShowAggregate(TransferRow* ip_row) {
    const std::string_view l_status = ip_row->AggregateStatus();
    if (!ip_row->isExpanded()) {
        ip_row->setText(transfer_column::Status, CellText(l_status));
    }
    ip_row->SetColourByStatus(l_status);
    if (l_status != m_types.active) {
        ClearFigures(ip_row);
    }
    if (l_status == "complete") {
        mp_tree->RemoveProgress(ip_row);
    }
}

// Of what moves no more.
void TransferList::ClearFigures(TransferRow* ip_row) {
    ip_row->setText(transfer_column::TimeLeft, QString());
    ip_row->setText(transfer_column::Rate, QString());
}

void TransferList::OnEntryRemoved(Item* ip_entry) {
    m_unpainted.erase(ip_entry);
    TransferRow* const lp_row = RowOf(ip_entry);
    if (!lp_row) {
        return;
    }
    TransferRow* const lp_folder = lp_row->Above();
    TransferRow* const lp_user = lp_folder->Above();
    lp_row->UncountStatus();
    RemoveRow(lp_row, m_types.fileNode);
    if (lp_folder->childCount() == 0) {
        RemoveRow(lp_folder, m_types.folderNode);
    } else {
        ShowAggregate(lp_folder);
    }
    if (lp_user->childCount() == 0) {
        RemoveRow(lp_user, m_types.userNode);
    } else {
        ShowAggregate(lp_user);
    }
    Q_EMIT RowsChanged();
}

void TransferList::RemoveRow(TransferRow* ip_row, const char* ip_nodeType) {
    const ItemPtr l_node = d.GetType(ip_nodeType)->HasItem(ip_row);
    delete ip_row;
    l_node.Remove();
}

void TransferList::ExpandFolders(bool i_expand) {
    m_expandFolders = i_expand;
    ExpandAll(TransferRow::FolderLevel, i_expand);
}

void TransferList::ExpandUsers(bool i_expand) {
    m_expandUsers = i_expand;
    ExpandAll(TransferRow::UserLevel, i_expand);
}

void TransferList::ExpandAll(TransferRow::Level i_level, bool i_expand) {
    mp_tree->PostponeLayout();
    for (int l_index = 0; l_index < mp_tree->topLevelItemCount(); ++l_index) {
        QTreeWidgetItem* const lp_user = mp_tree->topLevelItem(l_index);
        if (i_level == TransferRow::UserLevel) {
            lp_user->setExpanded(i_expand);
            continue;
        }
        for (int l_child = 0; l_child < lp_user->childCount(); ++l_child) {
            lp_user->child(l_child)->setExpanded(i_expand);
        }
    }
}

// The details show on the rows below from now on.
void TransferList::OnItemExpanded(QTreeWidgetItem* ip_item) {
    TransferRow* const lp_row = Row(ip_item);
    if (!lp_row->IsFile()) {
        lp_row->setText(transfer_column::Status, QString());
        ClearFigures(lp_row);
        mp_tree->RemoveProgress(lp_row);
    }
}

void TransferList::OnItemCollapsed(QTreeWidgetItem* ip_item) {
    TransferRow* const lp_row = Row(ip_item);
    if (!lp_row->IsFile()) {
        lp_row->setText(transfer_column::Status, CellText(lp_row->AggregateStatus()));
    }
}

ItemSet TransferList::SelectedEntries() const {
    ItemSet l_entries;
    for (const QTreeWidgetItem* const lp_row : mp_tree->selectedItems()) {
        l_entries.Add(EntriesBelow(m_types, lp_row));
    }
    return l_entries;
}
