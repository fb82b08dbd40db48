// A path: a small tree of Types with a relation on each edge. Data::AddPathEventHandler calls a handler with the
// root item when a change in the graph makes the tree true.
//
// A path may carry at most one `Newly` edge, and its other edges are then ConnectedCondition; without one it fires
// on each of its Connected edges. A pair of Types occurs once in a path.
#pragma once

#include <string_view>
#include <utility>
#include <vector>

#include "store/item.h"

enum PathNodeRelation {
    Connected = 0,          // fires on connection of the pair; is true when a connected item verifies
    ConnectedCondition = 1, // never fires; is true when a connected item verifies
    NewlyConnected = 2,     // fires on connection of the pair; only the very edge that changed may carry it
    NewlyDisconnected = 5   // fires on disconnection of the pair; likewise
};

// Made with new; a node owns its children, and Data owns the root once it is registered.
class PathNode {
public:
    // A root: for any item of the Type, or for one item only.
    PathNode(Data* ip_data, std::string_view i_type);
    PathNode(Data& i_data, std::string_view i_type) : PathNode(&i_data, i_type) {}
    explicit PathNode(ItemPtr i_item);
    // A child, likewise.
    PathNode(PathNode* ip_parent, std::string_view i_type, PathNodeRelation i_relation);
    PathNode(PathNode* ip_parent, ItemPtr i_item, PathNodeRelation i_relation);
    PathNode(const PathNode&) = delete;
    PathNode& operator=(const PathNode&) = delete;
    ~PathNode();

private:
    friend class Data;

    void Pin(Item* ip_item);
    bool Matches(const Item* ip_item) const { return !m_isPinned || m_item == ip_item; }

    Data* m_data;
    std::pair<PathNode*, PathNodeRelation> m_parentInfo{nullptr, Connected};
    Type* m_type = nullptr;
    Item* m_item = nullptr; // the only item that matches, if pinned; null once that was removed
    bool m_isPinned = false;
    std::vector<std::pair<PathNode*, PathNodeRelation>> m_children;
};
