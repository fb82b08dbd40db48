// The window behind "Data": a live look at the store for whoever looks for a fault in the program. It lists the Types,
// the items of the selected one, and the connections of the clicked item as a tree that opens lazily.
//
// It stays quick whatever the store holds: only a slice of a Type's items has rows, more come with scrolling, and the
// newest push the oldest rows out again.
#pragma once

#include "store/data.h"
#include "store/data_saver.h"
#include "ui/data_item_feed.h"

#include <QDialog>
#include <QTimer>

#include <functional>
#include <set>

#include <absl/container/flat_hash_map.h>
#include <absl/container/flat_hash_set.h>

class QLabel;
class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

class DataDialog : public QDialog, public DataHandler {
    Q_OBJECT

public:
    // Deletes itself when it is closed.
    DataDialog(Data* ip_data, QWidget* ip_parent);

    // What "Save now" does; without it the button is disabled.
    using Save = std::function<SaveResult()>;
    void SetSave(Save i_save);

public Q_SLOTS:
    void OnTypeItemSelectionChanged();
    void OnItemClicked(QListWidgetItem* ip_entry);
    void OnDataSubItemExpanded(QTreeWidgetItem* ip_node);

private:
    using TypeSet = std::set<Type*>;

    void BuildLayout();
    QWidget* MakeTypePane();
    QWidget* MakeItemPane();
    QWidget* MakeFoot();
    void WatchStore();

    // Handlers.
    void OnTypeAdded(Type* ip_type);
    void OnItemAdded(Item* ip_item);
    void OnItemRemoved(Item* ip_item);
    void OnSettingValueChanged(ConnectionInfo i_info);

    // The Types.
    void AddTypeRow(Type* ip_type);
    void ShowCount(Type* ip_type, std::size_t i_count);
    void OnTypeFilterChanged();
    void ApplyTypeFilter(QTreeWidgetItem* ip_row);

    // The items of the selected Type.
    void FillItems();
    void AddSlice();
    void AddSliceAtEnd(int i_scrollPosition);
    void AddEntry(Item* ip_item, int i_row);
    Item* TakeEntry(QListWidgetItem* ip_entry);
    void ShowItemCount();
    void OnFilterPause();
    void OnReadMore();

    // The connections of the clicked item.
    QTreeWidgetItem* MakeNode(Item* ip_item, const QString& i_text, const TypeSet& i_types);
    void AddItemSubnodes(Item* ip_item, QTreeWidgetItem* ip_node, const TypeSet& i_types);
    void AddNodesOfType(QTreeWidgetItem* ip_node, Type* ip_type, const ItemSet& i_items, const TypeSet& i_types);
    void OnNodeClicked(QTreeWidgetItem* ip_node);
    void ClearTree();

    void OnSweepClicked();
    void OnSaveClicked();

    Data* mp_data;
    Save m_save;

    Type* mp_selectedType = nullptr;
    DataItemFeed m_feed;
    std::size_t m_entryLimit = 0; // grows with every slice that is scrolled to
    absl::flat_hash_map<QListWidgetItem*, Item*> m_listItems;
    absl::flat_hash_map<Item*, QListWidgetItem*> m_itemListItems;

    absl::flat_hash_map<Item*, absl::flat_hash_set<QTreeWidgetItem*>> m_itemNodes;
    absl::flat_hash_map<QTreeWidgetItem*, Item*> m_nodeItems;
    absl::flat_hash_map<QTreeWidgetItem*, TypeSet> m_nodeTypes; // on the way down to it, its own included
    absl::flat_hash_set<QTreeWidgetItem*> m_loadedNodes;
    absl::flat_hash_map<QTreeWidgetItem*, Type*> m_restNodes; // stand for connected items of the Type without a node

    absl::flat_hash_map<QTreeWidgetItem*, std::string> m_typeRows;
    absl::flat_hash_map<std::string, QTreeWidgetItem*> m_typeNames;
    absl::flat_hash_map<Type*, std::size_t> m_typeCounts;

    QTreeWidget* mp_typeList = nullptr;
    QLineEdit* mp_typeFilter = nullptr;
    QListWidget* mp_itemList = nullptr;
    QLineEdit* mp_itemFilter = nullptr;
    QLabel* mp_itemCount = nullptr;
    QTreeWidget* mp_itemDataTree = nullptr;
    QPushButton* mp_saveButton = nullptr;
    QLabel* mp_result = nullptr;

    QTimer m_filterPause; // between two keys of someone who types
    QTimer m_readTimer;   // runs while items are to be held against the filter
};
