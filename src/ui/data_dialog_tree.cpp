// The tree of the clicked item's connections. The store is large and full of cycles: a node's children come when it is
// opened, never of a Type that lies on the way down to it, and a slice of them at a time.
#include "ui/data_dialog.h"

#include "app/text.h"
#include "ui/data_item_text.h"

#include <QListWidget>
#include <QTreeWidget>

namespace {

// Children of one Type under one node that come at a time.
constexpr std::size_t c_slice = 500;

} // namespace

void DataDialog::ClearTree() {
    m_itemNodes.clear();
    m_nodeItems.clear();
    m_nodeTypes.clear();
    m_loadedNodes.clear();
    m_restNodes.clear();
    mp_itemDataTree->clear();
}

void DataDialog::OnItemClicked(QListWidgetItem* ip_entry) {
    Item* const lp_item = m_listItems.at(ip_entry);
    ClearTree();
    const TypeSet l_types{lp_item->GetType()};
    QTreeWidgetItem* const lp_node = MakeNode(lp_item, ItemText(*lp_item), l_types);
    mp_itemDataTree->addTopLevelItem(lp_node);
    AddItemSubnodes(lp_item, lp_node, l_types);
}

QTreeWidgetItem* DataDialog::MakeNode(Item* ip_item, const QString& i_text, const TypeSet& i_types) {
    QTreeWidgetItem* const lp_node = new QTreeWidgetItem({i_text});
    m_itemNodes[ip_item].insert(lp_node);
    m_nodeItems[lp_node] = ip_item;
    m_nodeTypes[lp_node] = i_types;
    return lp_node;
}

void DataDialog::AddItemSubnodes(Item* ip_item, QTreeWidgetItem* ip_node, const TypeSet& i_types) {
    m_loadedNodes.insert(ip_node);
    std::map<Type*, ItemSet> l_connected;
    ip_item->GetConnectedItems(l_connected);
    for (const auto& [lp_type, l_items] : l_connected) {
        if (!i_types.contains(lp_type)) {
            AddNodesOfType(ip_node, lp_type, l_items, i_types);
        }
    }
    mp_itemDataTree->expandItem(ip_node);
}

// Those that have no node here yet, as many as one slice holds.
void DataDialog::AddNodesOfType(QTreeWidgetItem* ip_node, Type* ip_type, const ItemSet& i_items,
                                const TypeSet& i_types) {
    TypeSet l_types = i_types;
    l_types.insert(ip_type);
    absl::flat_hash_set<Item*> l_present;
    for (int l_child = 0; l_child < ip_node->childCount(); ++l_child) {
        if (const auto l_place = m_nodeItems.find(ip_node->child(l_child)); l_place != m_nodeItems.end()) {
            l_present.insert(l_place->second);
        }
    }
    QList<QTreeWidgetItem*> l_children;
    std::size_t l_left = 0;
    for (Item* lp_item : i_items) {
        if (l_present.contains(lp_item)) {
            continue;
        }
        if (static_cast<std::size_t>(l_children.size()) == c_slice) {
            ++l_left;
            continue;
        }
        QTreeWidgetItem* const lp_child = MakeNode(lp_item, LabelledItemText(*lp_item), l_types);
        if (!lp_item->IsDisconnectedFromAll()) {
            lp_child->addChild(new QTreeWidgetItem({tr("~~unloaded~~")}));
        }
        l_children.append(lp_child);
    }
    if (l_left > 0) {
        QTreeWidgetItem* const lp_rest =
            new QTreeWidgetItem({tr("%1 more: click to load").arg(CommafyNumber(static_cast<long long>(l_left)))});
        m_restNodes[lp_rest] = ip_type;
        l_children.append(lp_rest);
    }
    ip_node->addChildren(l_children);
}

void DataDialog::OnDataSubItemExpanded(QTreeWidgetItem* ip_node) {
    if (m_loadedNodes.contains(ip_node)) {
        return;
    }
    qDeleteAll(ip_node->takeChildren());
    AddItemSubnodes(m_nodeItems.at(ip_node), ip_node, m_nodeTypes.at(ip_node));
}

void DataDialog::OnNodeClicked(QTreeWidgetItem* ip_node) {
    const auto l_place = m_restNodes.find(ip_node);
    if (l_place == m_restNodes.end()) {
        return;
    }
    Type* const lp_type = l_place->second;
    QTreeWidgetItem* const lp_parent = ip_node->parent();
    m_restNodes.erase(l_place);
    delete ip_node;
    ItemSet l_items;
    m_nodeItems.at(lp_parent)->GetItems(lp_type->GetName(), l_items);
    AddNodesOfType(lp_parent, lp_type, l_items, m_nodeTypes.at(lp_parent));
}
