#include "net/frame_reader.h"

#include <algorithm>
#include <cstring>

FrameReader::FrameReader(std::size_t i_limit) : m_limit(i_limit) {}

std::size_t FrameReader::Wanted() const {
    if (m_status != Status::NeedMore)
        return 0;
    if (!IsLengthKnown())
        return sizeof(m_header) - m_headerLength;
    return std::min(CapacityForMore() - static_cast<std::size_t>(m_frame.GetWriteIndex()), limits::receivePiece);
}

std::size_t FrameReader::CapacityForMore() const {
    // One piece to begin with, then twice what is full: a frame costs no more than that, whatever it has announced.
    const std::size_t l_capacity = static_cast<std::size_t>(m_frame.GetCapacity());
    std::size_t l_wanted = std::max(l_capacity, limits::receivePiece);
    if (m_frame.GetFreeCapacity() == 0)
        l_wanted = std::max(l_wanted, 2 * l_capacity);
    return std::min<std::size_t>(l_wanted, m_header);
}

FrameReader::Status FrameReader::Take(const char* ip_bytes, std::size_t i_length) {
    TIDEWELL_CONTRACT(i_length <= Wanted());
    if (i_length > 0)
        std::memcpy(Place(), ip_bytes, i_length);
    return Placed(i_length);
}

char* FrameReader::Place() {
    if (!IsLengthKnown())
        return reinterpret_cast<char*>(&m_header) + m_headerLength;
    m_frame.Reserve(static_cast<int>(CapacityForMore()));
    return m_frame.GetWriteBuffer();
}

FrameReader::Status FrameReader::Placed(std::size_t i_length) {
    TIDEWELL_CONTRACT(i_length <= Wanted());
    if (m_status != Status::NeedMore)
        return m_status;
    if (!IsLengthKnown())
        m_headerLength += i_length;
    else
        m_frame.AdvanceWriteIndex(static_cast<int>(i_length));
    Judge();
    return m_status;
}

void FrameReader::Judge() {
    // A negative length is a large unsigned one.
    if (IsLengthKnown() && m_header > m_limit)
        m_status = Status::BadLength;
    else if (IsLengthKnown() && m_header == static_cast<std::uint32_t>(m_frame.GetWriteIndex()))
        m_status = Status::FrameReady;
}

void FrameReader::Reset() {
    if (static_cast<std::size_t>(m_frame.GetCapacity()) > limits::keptReceiveBuffer) {
        Renew();
        return;
    }
    m_frame.Clear();
    m_headerLength = 0;
    m_status = Status::NeedMore;
}

void FrameReader::Renew() {
    m_frame = MemStream();
    m_headerLength = 0;
    m_status = Status::NeedMore;
}

void FrameReader::SetLimit(std::size_t i_limit) {
    m_limit = i_limit;
    Judge();
}

MemStream MakeFrame(const MemStream& i_body) {
    MemStream l_frame;
    const std::string_view l_bytes = i_body.GetWritten();
    l_frame.Reserve(static_cast<int>(sizeof(std::int32_t) + l_bytes.size() + 1));
    l_frame.Write(static_cast<std::int32_t>(l_bytes.size()));
    l_frame.WriteBuffer(l_bytes.data(), l_bytes.size());
    return l_frame;
}
