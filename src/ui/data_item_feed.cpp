#include "ui/data_item_feed.h"

#include "ui/data_item_text.h"

namespace {

// Between two looks at the clock.
constexpr int c_stride = 256;

} // namespace

void DataItemFeed::Start(Type* ip_type, const QString& i_filter) {
    m_filter = i_filter;
    m_unread.clear();
    m_waiting.clear();
    if (ip_type) {
        ip_type->GetItems(i_filter.isEmpty() ? m_waiting : m_unread);
    }
}

bool DataItemFeed::Passes(const Item& i_item) const {
    return m_filter.isEmpty() || ItemFilterText(i_item).contains(m_filter, Qt::CaseInsensitive);
}

void DataItemFeed::Forget(Item* ip_item) {
    m_unread.erase(ip_item);
    m_waiting.erase(ip_item);
}

void DataItemFeed::Read(std::chrono::milliseconds i_time) {
    const auto l_end = std::chrono::steady_clock::now() + i_time;
    do {
        for (int l_count = 0; l_count < c_stride && !m_unread.empty(); ++l_count) {
            Item* const lp_item = *m_unread.begin();
            m_unread.erase(m_unread.begin());
            if (Passes(*lp_item)) {
                m_waiting.insert(lp_item);
            }
        }
    } while (!m_unread.empty() && std::chrono::steady_clock::now() < l_end);
}

std::vector<Item*> DataItemFeed::Take(std::size_t i_count) {
    std::vector<Item*> l_items;
    while (l_items.size() < i_count && !m_waiting.empty()) {
        l_items.push_back(*m_waiting.begin());
        m_waiting.erase(m_waiting.begin());
    }
    return l_items;
}
