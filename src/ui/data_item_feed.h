// The items of one Type that a list has not got yet. A Type may have millions: they are held against the filter piece
// by piece, and handed out as the list asks for them.
#pragma once

#include "store/data.h"

#include <QString>

#include <chrono>
#include <vector>

class DataItemFeed {
public:
    // Begins anew with all items of the Type; null for none. An empty filter lets everything through.
    void Start(Type* ip_type, const QString& i_filter);

    // Whether the value has the filter in it, in whatever case.
    bool Passes(const Item& i_item) const;
    // Back to those that wait; it has passed the filter.
    void PutBack(Item* ip_item) { m_waiting.insert(ip_item); }
    // Before the item goes.
    void Forget(Item* ip_item);

    // Holds items against the filter until about that much time has passed.
    void Read(std::chrono::milliseconds i_time);
    bool IsRead() const { return m_unread.empty(); }

    // Up to that many, in address order.
    std::vector<Item*> Take(std::size_t i_count);
    // Passed the filter and not taken; as far as it is read.
    std::size_t WaitingCount() const { return m_waiting.size(); }

private:
    QString m_filter;
    ItemSet m_unread;
    ItemSet m_waiting;
};
