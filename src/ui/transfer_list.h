// One direction of transfers as a tree of users, folders and files that follows the store.
//
// There is no model beside the store: a row is found from its entry, and the entry from its row, through node items
// that hold the rows' addresses. A row lives as long as its entry; the rows above it as long as there is one below.
#pragma once

#include "store/data.h"
#include "ui/transfer_row.h"
#include "ui/transfer_types.h"

#include <QObject>
#include <QTimer>

#include <absl/container/btree_set.h>

class TransferTree;

class TransferList : public QObject, public DataHandler {
    Q_OBJECT

public:
    // Creates the Types of the rows. Neither argument is owned, both outlive the list.
    TransferList(const TransferTypes& i_types, TransferTree* ip_tree);

    const TransferTypes& Types() const { return m_types; }
    TransferTree* Tree() const { return mp_tree; }

    // A row for the entry, with those above it as far as they are missing. Nothing happens if it has one already, or
    // lacks what a row shows.
    void AddEntry(Item* ip_entry);
    // The user's name, with a mark behind it for one who is away.
    void ShowName(Item* ip_user, bool i_isOnline);
    void ShowPlace(Item* ip_entry);

    // Whether rows open as they come, and all rows of the kind that there are.
    void ExpandFolders(bool i_expand);
    void ExpandUsers(bool i_expand);

    // The entries below the selected rows, each once.
    ItemSet SelectedEntries() const;

Q_SIGNALS:
    // An entry has become "complete". The entry may be gone by the time a queued connection delivers this.
    void Completed(ItemPtr i_entry);
    // Rows have come or gone.
    void RowsChanged();

public Q_SLOTS:
    // The figures of the entry have changed. They are painted now or soon, ten times a second at most.
    void OnProgress(ItemPtr i_entry);

private:
    void OnStatusChange(ConnectionInfo& i_info);
    void OnEntryRemoved(Item* ip_entry);
    void OnItemExpanded(QTreeWidgetItem* ip_item);
    void OnItemCollapsed(QTreeWidgetItem* ip_item);

    TransferRow* RowOf(ItemPtr i_entry) const;
    TransferRow* FindOrMakeUserRow(ItemPtr i_user);
    TransferRow* FindOrMakeFolderRow(TransferRow* ip_user, ItemPtr i_folder);
    void RemoveRow(TransferRow* ip_row, const char* ip_nodeType);
    void ShowAggregate(TransferRow* ip_row);
    void ClearFigures(TransferRow* ip_row);
    void ExpandAll(TransferRow::Level i_level, bool i_expand);

    // transfer_figures.cpp
    void PaintFigures();
    void PaintFigures(ItemPtr i_entry);
    void PaintSum(TransferRow* ip_row, int i_rate);

    const TransferTypes& m_types;
    TransferTree* mp_tree;
    bool m_expandFolders = true;
    bool m_expandUsers = true;
    absl::btree_set<Item*> m_unpainted; // entries whose figures have changed since they were painted
    QTimer m_paintTimer;                // runs while it is too early to paint again
};
