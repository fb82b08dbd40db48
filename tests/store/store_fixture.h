// A store of one's own and a listener that writes down what it hears.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "store/data.h"

// Writes each event as a line: what, and the values of the items concerned.
class EventLog : public DataHandler {
public:
    void ListenTo(Type* ip_type) {
        ip_type->m_itemAdded.AddHandler(MakeHandler(this, &EventLog::OnAdded));
        ip_type->m_itemRemoved.AddHandler(MakeHandler(this, &EventLog::OnRemoved));
        ip_type->m_connected.AddHandler(MakeHandler(this, &EventLog::OnConnected));
        ip_type->m_disconnected.AddHandler(MakeHandler(this, &EventLog::OnDisconnected));
    }
    void ListenTo(Data& i_data) {
        i_data.m_itemAdded.AddHandler(MakeHandler(this, &EventLog::OnAnyAdded));
        i_data.m_itemRemoved.AddHandler(MakeHandler(this, &EventLog::OnAnyRemoved));
        i_data.m_connected.AddHandler(MakeHandler(this, &EventLog::OnAnyConnected));
        i_data.m_disconnected.AddHandler(MakeHandler(this, &EventLog::OnAnyDisconnected));
    }
    void ListenTo(Type* ip_a, Type* ip_b) {
        Data& l_data = *ip_a->GetData();
        l_data.AddConnectionEventHandler(ip_a, ip_b, MakeHandler(this, &EventLog::OnPairConnected));
        l_data.AddDisconnectionEventHandler(ip_a, ip_b, MakeHandler(this, &EventLog::OnPairDisconnected));
    }
    void ListenTo(PathNode* ip_root, Data& i_data) {
        i_data.AddPathEventHandler(ip_root, MakeHandler(this, &EventLog::OnPath));
    }

    std::vector<std::string> Take() { return std::exchange(m_lines, {}); }

    static std::string Name(const Item* ip_item) {
        return ip_item->GetType()->IsNull() ? "<" + ip_item->GetType()->GetName() + ">" : ip_item->AsString();
    }

private:
    void OnAdded(Item* ip_item) { m_lines.push_back("added " + Name(ip_item)); }
    void OnRemoved(Item* ip_item) { m_lines.push_back("removed " + Name(ip_item)); }
    void OnConnected(ConnectionInfo i_info) { Note("connected", i_info); }
    void OnDisconnected(ConnectionInfo i_info) { Note("disconnected", i_info); }
    void OnAnyAdded(Item* ip_item) { m_lines.push_back("any added " + Name(ip_item)); }
    void OnAnyRemoved(Item* ip_item) { m_lines.push_back("any removed " + Name(ip_item)); }
    void OnAnyConnected(ConnectionInfo i_info) { Note("any connected", i_info); }
    void OnAnyDisconnected(ConnectionInfo i_info) { Note("any disconnected", i_info); }
    void OnPairConnected(ConnectionInfo& i_info) { Note("pair connected", i_info); }
    void OnPairDisconnected(ConnectionInfo& i_info) { Note("pair disconnected", i_info); }
    void OnPath(Item* ip_item) { m_lines.push_back("path " + Name(ip_item)); }
    void Note(const std::string& i_what, const ConnectionInfo& i_info) {
        m_lines.push_back(i_what + ' ' + Name(i_info.m_itemFrom) + ' ' + Name(i_info.m_itemTo));
    }

    std::vector<std::string> m_lines;
};

// A listener whose deeds a test gives it.
class Reaction : public DataHandler {
public:
    using ItemDeed = std::function<void(Item*)>;
    using ConnectionDeed = std::function<void(ConnectionInfo)>;

    explicit Reaction(ItemDeed i_deed) : m_itemDeed(std::move(i_deed)) {}
    explicit Reaction(ConnectionDeed i_deed) : m_connectionDeed(std::move(i_deed)) {}

    EventHandlerBase<Item*>* ForItem() { return MakeHandler(this, &Reaction::OnItem); }
    EventHandlerBase<ConnectionInfo>* ForConnection() { return MakeHandler(this, &Reaction::OnConnection); }
    EventHandlerBase<ConnectionInfo&>* ForPair() { return MakeHandler(this, &Reaction::OnPair); }

private:
    void OnItem(Item* ip_item) { m_itemDeed(ip_item); }
    void OnConnection(ConnectionInfo i_info) { m_connectionDeed(i_info); }
    void OnPair(ConnectionInfo& i_info) { m_connectionDeed(i_info); }

    ItemDeed m_itemDeed;
    ConnectionDeed m_connectionDeed;
};
