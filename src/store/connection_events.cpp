// Who is told of a connection and of its end, and in which order.
#include "store/data.h"

bool IsEventOver(const Type*) {
    return false;
}

bool IsEventOver(const ConnectionInfo& i_info) {
    return IsEventOver(i_info.m_itemFrom) || IsEventOver(i_info.m_itemTo);
}

void Data::NotifyConnected(Item* ip_from, Item* ip_to, Relation& i_relation) {
    Type& l_from = *ip_from->mp_type;
    Type& l_to = *ip_to->mp_type;
    const Relation& l_back = *l_to.m_relations[i_relation.farSlot];
    if (l_from.m_connected.IsEmpty() && m_connected.IsEmpty() && l_to.m_connected.IsEmpty() &&
        i_relation.connectionHandlers.IsEmpty() && l_back.connectionHandlers.IsEmpty())
        return;
    // Once a handler has removed either item its end has been told, and nobody hears of the beginning any more.
    ConnectionInfo l_there{ip_from, ip_to};
    ConnectionInfo l_here{ip_to, ip_from};
    l_from.m_connected.NotifyWhileThere(l_there);
    m_connected.NotifyWhileThere(l_there);
    l_to.m_connected.NotifyWhileThere(l_here);
    NotifyConnectionEventHandlers(ip_from, ip_to);
}

void Data::NotifyDisconnected(Item* ip_from, Item* ip_to, Relation* ip_relation) {
    Type& l_from = *ip_from->mp_type;
    Type& l_to = *ip_to->mp_type;
    const bool l_pairIsHeard =
        ip_relation != nullptr && !(ip_relation->disconnectionHandlers.IsEmpty() &&
                                    l_to.m_relations[ip_relation->farSlot]->disconnectionHandlers.IsEmpty());
    if (!l_pairIsHeard && l_from.m_disconnected.IsEmpty() && m_disconnected.IsEmpty() && l_to.m_disconnected.IsEmpty())
        return;
    // All are told, also when a handler removes one of the two: the other's listeners must learn what it lost.
    ConnectionInfo l_there{ip_from, ip_to};
    ConnectionInfo l_here{ip_to, ip_from};
    l_from.m_disconnected.Notify(l_there);
    m_disconnected.Notify(l_there);
    l_to.m_disconnected.Notify(l_here);
    NotifyDisconnectionEventHandlers(ip_from, ip_to);
}

void Data::NotifyConnectionEventHandlers(Item* ip_a, Item* ip_b) {
    ConnectionInfo l_there{ip_a, ip_b};
    ConnectionInfo l_here{ip_b, ip_a};
    if (Relation* lp_relation = ip_a->mp_type->FindRelation(ip_b->mp_type))
        lp_relation->connectionHandlers.Walk(l_there, [&l_there] { return IsEventOver(l_there); });
    if (Relation* lp_relation = ip_b->mp_type->FindRelation(ip_a->mp_type))
        lp_relation->connectionHandlers.Walk(l_here, [&l_here] { return IsEventOver(l_here); });
}

void Data::NotifyDisconnectionEventHandlers(Item* ip_a, Item* ip_b) {
    ConnectionInfo l_there{ip_a, ip_b};
    ConnectionInfo l_here{ip_b, ip_a};
    if (Relation* lp_relation = ip_a->mp_type->FindRelation(ip_b->mp_type))
        lp_relation->disconnectionHandlers.Walk(l_there, [] { return false; });
    if (Relation* lp_relation = ip_b->mp_type->FindRelation(ip_a->mp_type))
        lp_relation->disconnectionHandlers.Walk(l_here, [] { return false; });
}

void Data::AddConnectionEventHandler(Type* ip_a, Type* ip_b, EventHandlerBase<ConnectionInfo&>* ip_handler) {
    ip_a->RelationTo(ip_b).connectionHandlers.Add(ip_handler);
}

void Data::AddDisconnectionEventHandler(Type* ip_a, Type* ip_b, EventHandlerBase<ConnectionInfo&>* ip_handler) {
    ip_a->RelationTo(ip_b).disconnectionHandlers.Add(ip_handler);
}
