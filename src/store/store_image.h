// The bytes of a store file as a sequence of records, read one at a time. Pure and allocating nothing: counts and
// lengths are believed only as far as the bytes behind them go, and what was read before damage stands.
// The layout is told in data_saver.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

class StoreImageReader {
public:
    enum Record {
        TypeRecord,       // TypeName, IsNullType, ItemCount
        ItemRecord,       // Id, and Text unless the Type is null
        ConnectionRecord, // LowId, HighId
        End,              // everything was read, to the last byte
        Damage            // short, negative or impossible, or bytes left over; nothing follows
    };

    // The bytes must outlive the reader and the views it gives.
    explicit StoreImageReader(std::string_view i_bytes);

    // Reads the next record. After End and Damage it stays there.
    Record Next();

    std::string_view TypeName() const { return m_typeName; }
    bool IsNullType() const { return m_isNullType; }
    // As it was announced, not yet proven by bytes.
    std::int32_t ItemCount() const { return m_itemCount; }
    std::int32_t Id() const { return m_id; }
    // Up to its first zero byte. Valid as long as the bytes.
    std::string_view Text() const { return m_text; }
    std::int32_t LowId() const { return m_id; }
    std::int32_t HighId() const { return m_highId; }
    // Bytes not yet read: no count can be true beyond what they can hold.
    std::size_t BytesLeft() const { return m_bytes.size() - m_position; }

private:
    enum Phase { Types, Connections, Ended, Damaged };

    Record NextType();
    Record NextItem();
    Record NextConnection();
    Record Fail();
    bool StartConnections();
    bool ReadInt(std::int32_t& o_number);
    bool ReadCount(std::int32_t& o_count);
    bool ReadString(std::string_view& o_text);

    std::string_view m_bytes;
    std::size_t m_position = 0;
    Phase m_phase = Types;
    std::int32_t m_typesLeft = 0;
    std::int32_t m_itemsLeft = 0; // of the Type read last
    std::int32_t m_connectionsLeft = 0;

    std::string_view m_typeName;
    bool m_isNullType = false;
    std::int32_t m_itemCount = 0;
    std::int32_t m_id = 0;
    std::int32_t m_highId = 0;
    std::string_view m_text;
};
