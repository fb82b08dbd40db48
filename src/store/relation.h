// How many items of one Type may be connected to one of another, and what a Type keeps of each of its relations.
#pragma once

#include <cstdint>

#include "store/event.h"

enum OneOrMany { One = 0, Many = 1 };

// One direction of a relation.
struct RelationInfo {
    OneOrMany m_typeFrom; // how many items of the source Type one item of the target Type may be connected to
    OneOrMany m_typeTo;   // how many items of the target Type one item of the source Type may be connected to
    bool m_owns;          // the source Type owns the target Type
    bool m_ownedBy;       // the source Type is owned by the target Type
};

// A Type's own record of one of its relations: where in each of its items the neighbours lie, and who listens.
struct Relation {
    Relation(const RelationInfo& i_info, Type* ip_other, std::uint16_t i_slot)
        : info(i_info), other(ip_other), slot(i_slot) {}

    RelationInfo info;
    Type* other;
    std::uint16_t slot;        // of the neighbours in an item of this Type
    std::uint16_t farSlot = 0; // of the way back in an item of the other Type
    // For the pair (this Type, the other Type), in this order.
    HandlerSet<ConnectionInfo&> connectionHandlers;
    HandlerSet<ConnectionInfo&> disconnectionHandlers;
};
