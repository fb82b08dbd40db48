// Writes the chosen part of a store as the bytes of a store file.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "store/data.h"
#include "store/image_sink.h"

class StoreWriter {
public:
    // Both outlive the writer.
    StoreWriter(Data& i_data, ImageSink& i_image) : m_data(i_data), m_file(i_image) {}

    // What to save, in byte order of the names: all items of the Type, or those connected to one of the Types.
    void AddType(Type* ip_type);
    void AddTypeByConnection(Type* ip_type, const std::set<std::string>& i_connectionTypes);
    void Write();
    std::size_t ItemCount() const { return m_nextNumber - 1; } // written so far

private:
    struct SavedType {
        Type* type;
        bool isWhole;
        std::vector<const Relation*> keptBy; // the relations of which one must have a neighbour
    };

    bool IsKept(const Item& i_item, const SavedType& i_saved) const;
    void WriteItems(const SavedType& i_saved);
    std::int32_t WriteConnections();
    std::vector<const Relation*> RelationsToLaterTypes(std::size_t i_index) const;

    Data& m_data;
    ImageSink& m_file;
    std::vector<SavedType> m_types;
    std::uint32_t m_nextNumber = 1;
};
