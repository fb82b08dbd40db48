#include "store/store_writer.h"

#include <algorithm>

#include "store/neighbours_walk.h"

void StoreWriter::AddType(Type* ip_type) {
    m_types.push_back({ip_type, true, {}});
}

void StoreWriter::AddTypeByConnection(Type* ip_type, const std::set<std::string>& i_connectionTypes) {
    SavedType l_saved{ip_type, false, {}};
    for (const std::string& l_name : i_connectionTypes) {
        const Type* lp_other = m_data.FindType(l_name);
        if (lp_other != nullptr && ip_type->IsRelated(lp_other))
            l_saved.keptBy.push_back(&ip_type->RelationTo(lp_other));
    }
    m_types.push_back(l_saved);
}

void StoreWriter::Write() {
    m_file.WriteInt(static_cast<std::int32_t>(m_types.size()));
    for (const SavedType& l_saved : m_types)
        WriteItems(l_saved);
    // The number of connections is known when they are written.
    const std::uint64_t l_position = m_file.Position();
    m_file.WriteInt(0);
    m_file.PatchInt(l_position, WriteConnections());
}

bool StoreWriter::IsKept(const Item& i_item, const SavedType& i_saved) const {
    return i_saved.isWhole ||
           std::any_of(i_saved.keptBy.begin(), i_saved.keptBy.end(),
                       [&i_item](const Relation* ip_relation) { return !i_item.Slot(ip_relation->slot).IsEmpty(); });
}

void StoreWriter::WriteItems(const SavedType& i_saved) {
    const ItemSlabs& l_items = i_saved.type->m_items;
    const std::uint32_t l_firstNumber = m_nextNumber;
    l_items.ForEach([&](Item* ip_item) { ip_item->m_number = IsKept(*ip_item, i_saved) ? m_nextNumber++ : 0; });

    const std::string& l_name = i_saved.type->m_name;
    m_file.WriteInt(static_cast<std::int32_t>(l_name.size()));
    m_file.Write(l_name);
    m_file.Write(std::string_view(i_saved.type->m_isNull ? "\1" : "\0", 1));
    m_file.WriteInt(static_cast<std::int32_t>(m_nextNumber - l_firstNumber));
    l_items.ForEach([&](const Item* ip_item) {
        if (ip_item->m_number == 0)
            return;
        m_file.WriteInt(static_cast<std::int32_t>(ip_item->m_number));
        if (!i_saved.type->m_isNull) {
            m_file.WriteInt(static_cast<std::int32_t>(ip_item->AsView().size()));
            m_file.Write(ip_item->AsView());
        }
    });
}

std::int32_t StoreWriter::WriteConnections() {
    // Numbers rise with the Type's name and within a Type with the address, and neighbours lie in address order. So
    // walking to Types of the same or a later name meets each connection once and in order.
    std::int32_t l_count = 0;
    for (std::size_t l_index = 0; l_index < m_types.size(); ++l_index) {
        const std::vector<const Relation*> l_relations = RelationsToLaterTypes(l_index);
        if (l_relations.empty())
            continue;
        m_types[l_index].type->m_items.ForEach([&](const Item* ip_item) {
            const std::uint32_t l_low = ip_item->m_number;
            if (l_low == 0)
                return;
            for (const Relation* lp_relation : l_relations) {
                ip_item->Slot(lp_relation->slot).ForEach([&](const Item* ip_other) {
                    if (ip_other->m_number < l_low)
                        return;
                    m_file.WriteInt(static_cast<std::int32_t>(l_low));
                    m_file.WriteInt(static_cast<std::int32_t>(ip_other->m_number));
                    ++l_count;
                });
            }
        });
    }
    return l_count;
}

std::vector<const Relation*> StoreWriter::RelationsToLaterTypes(std::size_t i_index) const {
    std::vector<const Relation*> l_relations;
    for (std::size_t l_later = i_index; l_later < m_types.size(); ++l_later) {
        if (const Relation* lp_relation = m_types[i_index].type->FindRelation(m_types[l_later].type))
            l_relations.push_back(lp_relation);
    }
    return l_relations;
}
