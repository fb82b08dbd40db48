// Paths: their nodes, their registration, and the walk that decides whether a change made one true.
#include "store/data.h"
#include "store/neighbours_walk.h"

#include <vector>

PathNode::PathNode(Data* ip_data, std::string_view i_type) : m_data(ip_data), m_type(ip_data->GetType(i_type)) {}

PathNode::PathNode(ItemPtr i_item) : m_data(i_item->GetType()->GetData()) {
    Pin(i_item.Get());
}

PathNode::PathNode(PathNode* ip_parent, std::string_view i_type, PathNodeRelation i_relation)
    : m_data(ip_parent->m_data), m_parentInfo(ip_parent, i_relation), m_type(m_data->GetType(i_type)) {
    ip_parent->m_children.emplace_back(this, i_relation);
}

PathNode::PathNode(PathNode* ip_parent, ItemPtr i_item, PathNodeRelation i_relation)
    : m_data(ip_parent->m_data), m_parentInfo(ip_parent, i_relation) {
    Pin(i_item.operator->());
    ip_parent->m_children.emplace_back(this, i_relation);
}

PathNode::~PathNode() {
    if (m_item != nullptr) {
        const auto l_pins = m_data->m_pins.find(m_item);
        std::erase(l_pins->second, this);
        if (l_pins->second.empty()) {
            m_item->Unset(Item::Pinned);
            m_data->m_pins.erase(l_pins);
        }
    }
    for (const auto& [lp_child, l_relation] : m_children)
        delete lp_child;
}

void PathNode::Pin(Item* ip_item) {
    m_type = ip_item->GetType();
    m_item = ip_item;
    m_isPinned = true;
    ip_item->Set(Item::Pinned);
    m_data->m_pins[ip_item].push_back(this);
}

void Data::ForgetPins(Item* ip_item) {
    const auto l_pins = m_pins.find(ip_item);
    for (PathNode* lp_node : l_pins->second)
        lp_node->m_item = nullptr; // another item may come to lie at its address
    m_pins.erase(l_pins);
}

void Data::AddPathEventHandler(PathNode* ip_node, EventHandlerBase<Item*>* ip_handler) {
    STORE_CONTRACT(ip_node->m_parentInfo.first == nullptr, "ip_node->m_parentInfo.first == 0");
    auto* lp_info = new PathNodeHandlerInfo{{}, ip_handler, ip_node};
    m_paths.insert(lp_info);
    GetPathNodePairs(ip_node, lp_info->m_pairMap);
    for (const auto& [l_pair, l_edge] : lp_info->m_pairMap) {
        if (l_edge.relation == ConnectedCondition)
            continue;
        const bool l_isConnection = l_edge.relation != NewlyDisconnected;
        PathGroup& l_group = l_isConnection ? m_connectionPaths : m_disconnectionPaths;
        if (!l_group.infos.contains(l_pair)) {
            // One dispatcher for a pair, however many paths share it.
            auto* lp_dispatcher = MakeHandler(this, l_isConnection ? &Data::OnPathNodeEventConnection
                                                                   : &Data::OnPathNodeEventDisconnection);
            if (l_isConnection)
                AddConnectionEventHandler(l_pair.first, l_pair.second, lp_dispatcher);
            else
                AddDisconnectionEventHandler(l_pair.first, l_pair.second, lp_dispatcher);
            l_group.dispatchers[l_pair] = lp_dispatcher;
        }
        l_group.infos[l_pair].insert(lp_info);
    }
}

void Data::GetPathNodePairs(PathNode* ip_node, std::map<TypePair, PathNodePairInfo>& o_pairMap) {
    for (const auto& [lp_child, l_relation] : ip_node->m_children) {
        const TypePair l_typePair(ip_node->m_type, lp_child->m_type);
        STORE_CONTRACT(!o_pairMap.contains(l_typePair), "o_pairMap.find (l_typePair) == o_pairMap.end ()");
        o_pairMap[l_typePair] = {ip_node, lp_child, l_relation};
        GetPathNodePairs(lp_child, o_pairMap);
    }
}

void Data::RemovePathEventHandler(PathNodeHandlerInfo* ip_info) {
    for (const auto& [l_pair, l_edge] : ip_info->m_pairMap) {
        if (l_edge.relation != ConnectedCondition)
            LeavePathGroup(ip_info, l_pair, l_edge.relation != NewlyDisconnected);
    }
    m_paths.erase(ip_info);
    ip_info->isGone = true;
    m_deadPaths.push_back(ip_info);
    if (m_pathWalks == 0)
        BuryPaths();
}

void Data::LeavePathGroup(PathNodeHandlerInfo* ip_info, const TypePair& i_pair, bool i_isConnection) {
    PathGroup& l_group = i_isConnection ? m_connectionPaths : m_disconnectionPaths;
    const auto l_infos = l_group.infos.find(i_pair);
    l_infos->second.erase(ip_info);
    if (!l_infos->second.empty())
        return;
    const auto l_dispatcher = l_group.dispatchers.find(i_pair);
    STORE_CONTRACT(
        l_dispatcher != l_group.dispatchers.end(),
        i_isConnection
            ? "m_typePairConnectionHandlerMap.find(l_typePair) != m_typePairConnectionHandlerMap.end ()"
            : "m_typePairDisconnectionHandlerMap.find(l_typePair) != m_typePairDisconnectionHandlerMap.end ()");
    Relation& l_relation = i_pair.first->RelationTo(i_pair.second);
    (i_isConnection ? l_relation.connectionHandlers : l_relation.disconnectionHandlers).Remove(l_dispatcher->second);
    l_group.dispatchers.erase(l_dispatcher);
    l_group.infos.erase(l_infos);
}

void Data::BuryPaths() {
    for (PathNodeHandlerInfo* lp_info : m_deadPaths) {
        delete lp_info->handler;
        delete lp_info->root;
        delete lp_info;
    }
    m_deadPaths.clear();
}

void Data::OnPathNodeEventConnection(ConnectionInfo& i_info) {
    const TypePair l_typePair(i_info.m_itemFrom->mp_type, i_info.m_itemTo->mp_type);
    STORE_CONTRACT(m_connectionPaths.infos.contains(l_typePair),
                   "m_typePairConnectionHandlerInfoMap.find (l_typePair) != m_typePairConnectionHandlerInfoMap.end ()");
    DispatchPathEvent(i_info, m_connectionPaths, l_typePair);
}

void Data::OnPathNodeEventDisconnection(ConnectionInfo& i_info) {
    const TypePair l_typePair(i_info.m_itemFrom->mp_type, i_info.m_itemTo->mp_type);
    STORE_CONTRACT(
        m_disconnectionPaths.infos.contains(l_typePair),
        "m_typePairDisconnectionHandlerInfoMap.find (l_typePair) != m_typePairDisconnectionHandlerInfoMap.end ()");
    DispatchPathEvent(i_info, m_disconnectionPaths, l_typePair);
}

void Data::DispatchPathEvent(const ConnectionInfo& i_info, PathGroup& i_group, const TypePair& i_pair) {
    const auto& l_live = i_group.infos.find(i_pair)->second;
    const absl::InlinedVector<PathNodeHandlerInfo*, 8> l_copy(l_live.begin(), l_live.end());
    ++m_pathWalks;
    for (PathNodeHandlerInfo* lp_info : l_copy) {
        if (lp_info->isGone)
            continue;
        const auto l_edge = lp_info->m_pairMap.find(i_pair);
        STORE_CONTRACT(l_edge != lp_info->m_pairMap.end(),
                       "lp_info->m_pairMap.find (l_typePair) != lp_info->m_pairMap.end ()");
        if (lp_info->handler->m_removed) {
            RemovePathEventHandler(lp_info);
            continue;
        }
        Item* lp_root = nullptr;
        if (VerifyPathNodeParentNodeConnections(i_info.m_itemFrom, l_edge->second.parent, l_edge->second.child,
                                                lp_root) &&
            VerifyPathNodeSubNodeConnections(i_info.m_itemTo, l_edge->second.child, nullptr) &&
            !lp_root->Is(Item::Removed))
            lp_info->handler->Handle(lp_root);
    }
    if (--m_pathWalks == 0)
        BuryPaths();
}

bool Data::VerifyPathNodeSubNodeConnections(Item* ip_item, PathNode* ip_node, PathNode* ip_skip) const {
    if (!ip_node->Matches(ip_item))
        return false;
    for (const auto& l_nodeInfo : ip_node->m_children) {
        PathNode* lp_child = l_nodeInfo.first;
        if (lp_child == ip_skip)
            continue;
        STORE_CONTRACT(l_nodeInfo.second != NewlyConnected, "l_nodeInfo.second != NewlyConnected");
        STORE_CONTRACT(l_nodeInfo.second != NewlyDisconnected, "l_nodeInfo.second != NewlyDisconnected");
        const bool l_verifies = ip_item->SlotOf(lp_child->m_type).AnyOf([&](Item* ip_other) {
            return VerifyPathNodeSubNodeConnections(ip_other, lp_child, nullptr);
        });
        if (!l_verifies)
            return false;
    }
    return true;
}

bool Data::VerifyPathNodeParentNodeConnections(Item* ip_item, PathNode* ip_node, PathNode* ip_cameFrom,
                                               Item*& o_root) const {
    if (!ip_node->Matches(ip_item) || !VerifyPathNodeSubNodeConnections(ip_item, ip_node, ip_cameFrom))
        return false;
    PathNode* lp_parent = ip_node->m_parentInfo.first;
    if (lp_parent == nullptr) {
        o_root = ip_item;
        return true;
    }
    const PathNodeRelation l_parentRelation = ip_node->m_parentInfo.second;
    STORE_CONTRACT(l_parentRelation != NewlyConnected, "l_parentRelation != NewlyConnected");
    STORE_CONTRACT(l_parentRelation != NewlyDisconnected, "l_parentRelation != NewlyDisconnected");
    return ip_item->SlotOf(lp_parent->m_type).AnyOf([&](Item* ip_other) {
        return VerifyPathNodeParentNodeConnections(ip_other, lp_parent, ip_node, o_root);
    });
}
