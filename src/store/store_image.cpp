#include "store/store_image.h"

StoreImageReader::StoreImageReader(std::string_view i_bytes) : m_bytes(i_bytes) {
    if (!ReadCount(m_typesLeft))
        Fail();
}

StoreImageReader::Record StoreImageReader::Next() {
    if (m_phase == Types) {
        if (m_itemsLeft > 0)
            return NextItem();
        if (m_typesLeft > 0)
            return NextType();
        if (!StartConnections())
            return Fail();
    }
    if (m_phase == Connections) {
        if (m_connectionsLeft > 0)
            return NextConnection();
        if (BytesLeft() > 0)
            return Fail();
        m_phase = Ended;
    }
    return m_phase == Ended ? End : Damage;
}

StoreImageReader::Record StoreImageReader::NextType() {
    if (!ReadString(m_typeName) || BytesLeft() < 1)
        return Fail();
    const char l_flag = m_bytes[m_position++];
    if ((l_flag != 0 && l_flag != 1) || !ReadCount(m_itemCount))
        return Fail();
    m_isNullType = l_flag == 1;
    m_itemsLeft = m_itemCount;
    --m_typesLeft;
    return TypeRecord;
}

StoreImageReader::Record StoreImageReader::NextItem() {
    m_text = {};
    if (!ReadInt(m_id) || (!m_isNullType && !ReadString(m_text)))
        return Fail();
    m_text = m_text.substr(0, m_text.find('\0'));
    --m_itemsLeft;
    return ItemRecord;
}

StoreImageReader::Record StoreImageReader::NextConnection() {
    if (!ReadInt(m_id) || !ReadInt(m_highId))
        return Fail();
    --m_connectionsLeft;
    return ConnectionRecord;
}

bool StoreImageReader::StartConnections() {
    m_phase = Connections;
    return ReadCount(m_connectionsLeft);
}

StoreImageReader::Record StoreImageReader::Fail() {
    m_phase = Damaged;
    return Damage;
}

bool StoreImageReader::ReadInt(std::int32_t& o_number) {
    if (BytesLeft() < 4)
        return false;
    std::uint32_t l_number = 0;
    for (int l_byte = 3; l_byte >= 0; --l_byte)
        l_number = l_number << 8 | static_cast<unsigned char>(m_bytes[m_position + static_cast<std::size_t>(l_byte)]);
    m_position += 4;
    o_number = static_cast<std::int32_t>(l_number);
    return true;
}

bool StoreImageReader::ReadCount(std::int32_t& o_count) {
    return ReadInt(o_count) && o_count >= 0;
}

bool StoreImageReader::ReadString(std::string_view& o_text) {
    std::int32_t l_length = 0;
    if (!ReadCount(l_length) || static_cast<std::size_t>(l_length) > BytesLeft())
        return false;
    o_text = m_bytes.substr(m_position, static_cast<std::size_t>(l_length));
    m_position += o_text.size();
    return true;
}
