#include "store/store_loader.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t c_batch = 64; // connections

} // namespace

StoreLoader::StoreLoader(Data& i_data, std::function<bool(std::string_view)> i_isWanted)
    : m_data(i_data), m_isWanted(std::move(i_isWanted)) {}

bool StoreLoader::Load(std::string_view i_bytes) {
    // Handlers see everything come and may remove it again: what they remove stays in memory until the end.
    const Data::Operation l_operation(m_data);
    StoreImageReader l_reader(i_bytes);
    for (;;) {
        switch (l_reader.Next()) {
        case StoreImageReader::TypeRecord:
            TakeType(l_reader);
            break;
        case StoreImageReader::ItemRecord:
            TakeItem(l_reader);
            break;
        case StoreImageReader::ConnectionRecord:
            m_connections.emplace_back(l_reader.LowId(), l_reader.HighId());
            if (m_connections.size() == c_batch)
                TakeConnections();
            break;
        case StoreImageReader::End:
            TakeConnections();
            return true;
        case StoreImageReader::Damage:
            TakeConnections();
            return false;
        }
    }
}

void StoreLoader::TakeType(const StoreImageReader& i_reader) {
    mp_type = m_isWanted(i_reader.TypeName()) ? m_data.FindType(i_reader.TypeName()) : nullptr;
    if (mp_type != nullptr && mp_type->IsNull() != i_reader.IsNullType()) {
        mp_type = nullptr;
        ++m_leftOutCount;
    }
    // An item record has four bytes at least, or eight with its text.
    const std::size_t l_possible = i_reader.BytesLeft() / (i_reader.IsNullType() ? 4 : 8);
    const std::size_t l_count = std::min(static_cast<std::size_t>(i_reader.ItemCount()), l_possible);
    if (m_entries.size() + l_count > m_entries.capacity()) // grown as by push_back: there may be many small Types
        m_entries.reserve(std::max(m_entries.size() + l_count, 2 * m_entries.capacity()));
    if (mp_type != nullptr && !mp_type->IsNull())
        mp_type->m_values.reserve(mp_type->m_values.size() + l_count);
}

void StoreLoader::TakeItem(const StoreImageReader& i_reader) {
    Entry l_entry;
    if (mp_type != nullptr) {
        l_entry.item = mp_type->IsNull() ? mp_type->NewItem() : mp_type->FindOrCreateItem(i_reader.Text());
        ++m_itemCount;
    }
    if (static_cast<std::size_t>(i_reader.Id()) == m_entries.size() + 1) {
        m_entries.push_back(l_entry);
        return;
    }
    m_entries.push_back({});
    if (!m_oddEntries.emplace(i_reader.Id(), l_entry).second)
        ++m_leftOutCount;
}

StoreLoader::Entry* StoreLoader::Find(std::int32_t i_id) {
    if (!m_oddEntries.empty()) {
        if (const auto l_place = m_oddEntries.find(i_id); l_place != m_oddEntries.end())
            return &l_place->second;
    }
    return i_id >= 1 && static_cast<std::size_t>(i_id) <= m_entries.size() ? &m_entries[i_id - 1U] : nullptr;
}

void StoreLoader::TakeConnections() {
    for (const auto& [l_low, l_high] : m_connections) {
        __builtin_prefetch(Find(l_low));
        __builtin_prefetch(Find(l_high));
    }
    for (const auto& [l_low, l_high] : m_connections) {
        for (const Entry* lp_entry : {Find(l_low), Find(l_high)}) {
            if (lp_entry != nullptr)
                __builtin_prefetch(lp_entry->item);
        }
    }
    for (const auto& [l_low, l_high] : m_connections)
        TakeConnection(l_low, l_high);
    m_connections.clear();
}

void StoreLoader::TakeConnection(std::int32_t i_lowId, std::int32_t i_highId) {
    Entry* lp_low = Find(i_lowId);
    Entry* lp_high = Find(i_highId);
    if (lp_low == nullptr || lp_high == nullptr) {
        ++m_leftOutCount;
        return;
    }
    Item* lp_from = lp_low->item;
    Item* lp_to = lp_high->item;
    if (lp_from == nullptr || lp_to == nullptr)
        return;
    const Relation* lp_relation = lp_from->mp_type->FindRelation(lp_to->mp_type);
    // What stood at a `One` end before the load gives way, but of two records for one end the first holds.
    if (lp_relation == nullptr || !FillEnd(lp_relation->info.m_typeTo, lp_relation->slot, *lp_low) ||
        !FillEnd(lp_relation->info.m_typeFrom, lp_relation->farSlot, *lp_high)) {
        ++m_leftOutCount;
        return;
    }
    lp_from->Connect(lp_to);
}

bool StoreLoader::FillEnd(OneOrMany i_cardinality, unsigned i_slot, Entry& io_entry) {
    if (i_cardinality == Many || i_slot >= 64)
        return true;
    const std::uint64_t l_bit = std::uint64_t{1} << i_slot;
    const bool l_isFree = (io_entry.filledEnds & l_bit) == 0;
    io_entry.filledEnds |= l_bit;
    return l_isFree;
}
