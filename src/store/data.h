// The item store: one typed graph of items that holds all state of the program, and the whole public interface of
// it. Code reads the graph through ItemPtr and ItemSet, changes it, and registers handlers for the changes of others.
//
// Main thread only. Handlers run inside the operation that caused them and may themselves change anything.
// Type names are matched exactly; an unknown one is a contract fault.
#pragma once

#include <array>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <absl/container/btree_set.h>
#include <absl/container/flat_hash_map.h>
#include <absl/functional/function_ref.h>

#include "store/contract.h"
#include "store/event.h"
#include "store/item.h"
#include "store/item_set.h"
#include "store/path_node.h"
#include "store/type.h"
#include "store/value.h"

class Data : public DataHandler {
public:
    Data();
    ~Data() override;

    Event<Type*> m_typeAdded;
    // For items and connections of every Type, after the event of the Type itself.
    Event<Item*> m_itemAdded;
    Event<Item*> m_itemRemoved;
    Event<ConnectionInfo> m_connected;
    Event<ConnectionInfo> m_disconnected;

    // i_isRoot: its items are roots of the sweep. i_isNull: its items carry no value. i_autoCreate: Type::GetItem
    // makes missing items. A name that is there already is a contract fault.
    Type* NewType(std::string_view i_name, bool i_isRoot, bool i_isNull, bool i_autoCreate);
    Type* GetType(std::string_view i_name) const;
    Type* FindType(std::string_view i_name) const; // null if there is none
    void GetTypes(std::map<std::string, Type*>& o_types) const;

    // The items of the Type that are connected to every one of the items given; none for no items.
    ItemSet GetItemSubset(const ItemSet& i_items, std::string_view i_type) const;
    // The same without collecting them: calls with each, in address order, until the call answers true, and tells
    // whether one did. The call must not change the graph. Allocates nothing for up to eight items.
    bool AnyOfSubset(std::span<Item* const> i_items, std::string_view i_type,
                     absl::FunctionRef<bool(Item*)> i_predicate) const;
    ItemSet GetItems(ItemPtr i_first, ItemPtr i_second, std::string_view i_type) const;
    // The one such item, null if there is none; more than one is a contract fault.
    ItemPtr GetItem(const ItemSet& i_items, std::string_view i_type) const;
    ItemPtr GetItem(ItemPtr i_first, ItemPtr i_second, std::string_view i_type) const;
    // The items of the Type that are connected to any of the items given.
    ItemSet GetItems(const ItemSet& i_items, std::string_view i_type) const;

    // Removes, with all events, the items that lack an item of a Type that owns theirs, and those to which no chain
    // of connections leads from an item of a root Type. Answers how many.
    int RemoveDisconnectedItems();

    // Handlers for connections between two related Types; the first end is always of Type a, whichever side
    // Connect was called on. Data takes ownership.
    void AddConnectionEventHandler(Type* ip_a, Type* ip_b, EventHandlerBase<ConnectionInfo&>* ip_handler);
    void AddDisconnectionEventHandler(Type* ip_a, Type* ip_b, EventHandlerBase<ConnectionInfo&>* ip_handler);
    // Takes ownership of the nodes and of the handler, which is called with the root item.
    void AddPathEventHandler(PathNode* ip_root, EventHandlerBase<Item*>* ip_handler);

    // Stops the process (contract fault) if the graph contradicts itself: both ends of each connection agree, no
    // `One` end holds two, every item stands in its Type under its value. Costs a walk over everything.
    void CheckInvariants() const;

    // While one stands, removed items keep their memory. The graph's own operations hold one each; whoever walks
    // items and changes the graph on the way may hold one too.
    class Operation {
    public:
        explicit Operation(Data& i_data) : m_data(i_data) { ++m_data.m_depth; }
        ~Operation() {
            if (--m_data.m_depth == 0)
                m_data.EndOutermost();
        }
        Operation(const Operation&) = delete;
        Operation& operator=(const Operation&) = delete;

    private:
        Data& m_data;
    };

private:
    friend class CleanSweep;
    friend class InvariantCheck;
    friend class Item;
    friend class ItemSet;
    friend class PathNode;
    friend class StoreLoader;
    friend class StoreWriter;
    friend class Type;

    using TypePair = std::pair<Type*, Type*>;
    struct PathNodePairInfo {
        PathNode* parent;
        PathNode* child;
        PathNodeRelation relation;
    };
    // One registered path; owns its handler and its tree.
    struct PathNodeHandlerInfo {
        std::map<TypePair, PathNodePairInfo> m_pairMap; // by (parent's Type, child's Type)
        EventHandlerBase<Item*>* handler;
        PathNode* root;
        bool isGone = false; // out of the books, waiting for the walks that may hold it
    };
    // Connection and disconnection have one of these each.
    struct PathGroup {
        absl::flat_hash_map<TypePair, absl::btree_set<PathNodeHandlerInfo*>> infos;
        absl::flat_hash_map<TypePair, EventHandlerBase<ConnectionInfo&>*> dispatchers;
    };
    // An end made whose far end is being cleared for it.
    struct HalfLink {
        Item* near;
        Item* far;
        const Relation* relation;
    };
    struct TypeCacheEntry {
        const char* text = nullptr;
        Type* type = nullptr;
    };

    void NotifyConnected(Item* ip_from, Item* ip_to, Relation& i_relation);
    void NotifyDisconnected(Item* ip_from, Item* ip_to, Relation* ip_relation);
    void NotifyConnectionEventHandlers(Item* ip_a, Item* ip_b);
    void NotifyDisconnectionEventHandlers(Item* ip_a, Item* ip_b);

    void RemovePathEventHandler(PathNodeHandlerInfo* ip_info);
    void LeavePathGroup(PathNodeHandlerInfo* ip_info, const TypePair& i_pair, bool i_isConnection);
    void OnPathNodeEventConnection(ConnectionInfo& i_info);
    void OnPathNodeEventDisconnection(ConnectionInfo& i_info);
    void DispatchPathEvent(const ConnectionInfo& i_info, PathGroup& i_group, const TypePair& i_pair);
    void BuryPaths();
    void GetPathNodePairs(PathNode* ip_node, std::map<TypePair, PathNodePairInfo>& o_pairMap);
    bool VerifyPathNodeSubNodeConnections(Item* ip_item, PathNode* ip_node, PathNode* ip_skip) const;
    bool VerifyPathNodeParentNodeConnections(Item* ip_item, PathNode* ip_node, PathNode* ip_cameFrom,
                                             Item*& o_root) const;
    void ForgetPins(Item* ip_item);

    void EndOutermost() {
        if (!m_removedItems.empty() || c_isChecked)
            FinishOutermost();
    }
    void FinishOutermost();
    void CheckTouched();
    void Touch(Item* ip_item) {
        if (c_isChecked)
            m_touched.push_back(ip_item);
    }

#ifdef TIDEWELL_CHECK_INVARIANTS
    static constexpr bool c_isChecked = true;
#else
    static constexpr bool c_isChecked = false;
#endif

    std::map<std::string, Type*, std::less<>> m_types; // owned; in byte order of the names
    absl::flat_hash_map<std::string_view, Type*> m_typesByName;
    // Remembers where in memory recent names came from; each hit is compared with the Type's name.
    mutable std::array<TypeCacheEntry, 512> m_typeCache{};

    PathGroup m_connectionPaths;
    PathGroup m_disconnectionPaths;
    absl::btree_set<PathNodeHandlerInfo*> m_paths; // owned
    std::vector<PathNodeHandlerInfo*> m_deadPaths; // owned, deleted when m_pathWalks is 0
    unsigned m_pathWalks = 0;
    absl::flat_hash_map<const Item*, std::vector<PathNode*>> m_pins;

    unsigned m_depth = 0; // of operations within one another
    std::vector<Item*> m_removedItems;
    std::vector<HalfLink> m_halfLinks;

    unsigned m_sweepsEnded = 0;
    bool m_isSweeping = false;
    std::vector<Item*> m_bornInSweep;

    // For the checks after an outermost operation: what it has touched, what was done since all was checked, and
    // what that check cost.
    std::vector<Item*> m_touched;
    std::size_t m_workSinceCheck = 0;
    std::size_t m_lastCheckWork = 0;
};

// The one store of the program; there before main, without any Type.
extern Data d;

// All items of the Type.
ItemSet g(std::string_view i_type);
// The item of the Type with the value, or none; never makes one.
ItemSet i(std::string_view i_type, const Value& i_value);
