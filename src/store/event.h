// Handlers, events, and the base of everything that listens.
//
// An event walks a copy of its handlers and tests each one's removed flag at its turn: a handler added during a
// walk is first called at the next one, and one whose owner died meanwhile is skipped. The order among the
// handlers of one event is by address, so nobody may rely on it. When each event fires, before or after its
// change, stands at the operation that fires it (type.h, item.h).
#pragma once

#include <algorithm>
#include <functional>
#include <vector>

#include <absl/container/flat_hash_set.h>
#include <absl/container/inlined_vector.h>

class DataHandler;
class Item;
class Type;

// The item on whose side a change is reported, and the item at the other end.
struct ConnectionInfo {
    Item* m_itemFrom;
    Item* m_itemTo;
};

class EventHandlerRoot {
public:
    EventHandlerRoot() = default;
    EventHandlerRoot(const EventHandlerRoot&) = delete;
    EventHandlerRoot& operator=(const EventHandlerRoot&) = delete;
    virtual ~EventHandlerRoot(); // out of its owner's books

    bool m_removed = false; // its owner has gone: it must not be called any more

private:
    friend class DataHandler;
    DataHandler* mp_owner = nullptr; // not owned; null once it has gone
};

template <class A>
class EventHandlerBase : public EventHandlerRoot {
public:
    virtual void Handle(A i_argument) = 0;
};

template <class T, class A>
class EventHandler : public EventHandlerBase<A> {
public:
    EventHandler(T* ip_object, void (T::*ip_method)(A)) : m_object(ip_object), m_method(ip_method) {}

    void Handle(A i_argument) override { (m_object->*m_method)(i_argument); }

private:
    T* m_object;
    void (T::*m_method)(A);
};

// The handlers of one event or of one pair of Types; owns them.
template <class A>
class HandlerSet {
public:
    using Handler = EventHandlerBase<A>;

    HandlerSet() = default;
    HandlerSet(const HandlerSet&) = delete;
    HandlerSet& operator=(const HandlerSet&) = delete;
    ~HandlerSet();

    bool IsEmpty() const { return m_handlers.empty(); }
    void Add(Handler* ip_handler);
    // Takes the handler out and deletes it, at once or at the end of the walks that are under way.
    void Remove(Handler* ip_handler);
    // Calls each handler with the argument; i_isOver is asked before each and ends the walk by answering true.
    template <class IsOver>
    void Walk(A i_argument, IsOver i_isOver);

private:
    void Bury();

    std::vector<Handler*> m_handlers; // ascending by address
    std::vector<Handler*> m_dead;     // taken out during a walk, which may still hold them in its copy
    unsigned m_walks = 0;
};

// True when the item was removed while the event about it is being told: the rest of its handlers are spared.
bool IsEventOver(const Item* ip_item);
bool IsEventOver(const Type* ip_type);
bool IsEventOver(const ConnectionInfo& i_info);

template <class T>
class Event {
public:
    bool IsEmpty() const { return m_handlers.IsEmpty(); }
    // Takes ownership.
    void AddHandler(EventHandlerBase<T>* ip_handler) { m_handlers.Add(ip_handler); }
    // Tells all handlers, also when what it tells of disappears meanwhile.
    void Notify(T& i_argument) {
        if (!IsEmpty())
            m_handlers.Walk(i_argument, [] { return false; });
    }
    // Tells handlers for as long as what it tells of is there.
    void NotifyWhileThere(T& i_argument) {
        if (!IsEmpty())
            m_handlers.Walk(i_argument, [&i_argument] { return IsEventOver(i_argument); });
    }

private:
    HandlerSet<T> m_handlers;
};

// Whoever listens derives from this. Its death, or RemoveDataHandlers, silences all the handlers it has made.
class DataHandler {
public:
    DataHandler() = default;
    DataHandler(const DataHandler&) = delete;
    DataHandler& operator=(const DataHandler&) = delete;
    virtual ~DataHandler();

    // The handler is still to be given to an event or to Data, which owns it from then on.
    template <class T, class U, class A>
    EventHandlerBase<A>* MakeHandler(T* ip_object, void (U::*ip_method)(A)) {
        auto* lp_handler = new EventHandler<T, A>(ip_object, ip_method);
        Own(lp_handler);
        return lp_handler;
    }
    void RemoveDataHandlers();

private:
    friend class EventHandlerRoot;
    void Own(EventHandlerRoot* ip_handler);

    absl::flat_hash_set<EventHandlerRoot*> m_eventHandlers; // made by this object, owned by events
};

template <class A>
HandlerSet<A>::~HandlerSet() {
    Bury();
    for (Handler* lp_handler : m_handlers)
        delete lp_handler;
}

template <class A>
void HandlerSet<A>::Add(Handler* ip_handler) {
    const auto l_place = std::lower_bound(m_handlers.begin(), m_handlers.end(), ip_handler, std::less<Handler*>());
    if (l_place == m_handlers.end() || *l_place != ip_handler)
        m_handlers.insert(l_place, ip_handler);
}

template <class A>
void HandlerSet<A>::Remove(Handler* ip_handler) {
    const auto l_place = std::lower_bound(m_handlers.begin(), m_handlers.end(), ip_handler, std::less<Handler*>());
    if (l_place == m_handlers.end() || *l_place != ip_handler)
        return;
    m_handlers.erase(l_place);
    ip_handler->m_removed = true;
    m_dead.push_back(ip_handler);
    if (m_walks == 0)
        Bury();
}

template <class A>
template <class IsOver>
void HandlerSet<A>::Walk(A i_argument, IsOver i_isOver) {
    const absl::InlinedVector<Handler*, 8> l_copy(m_handlers.begin(), m_handlers.end());
    ++m_walks;
    for (Handler* lp_handler : l_copy) {
        if (lp_handler->m_removed)
            Remove(lp_handler);
        else if (!i_isOver())
            lp_handler->Handle(i_argument);
    }
    if (--m_walks == 0 && !m_dead.empty())
        Bury();
}

template <class A>
void HandlerSet<A>::Bury() {
    for (Handler* lp_handler : m_dead)
        delete lp_handler;
    m_dead.clear();
}
