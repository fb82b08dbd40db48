#include "net/mem_stream.h"

#include <cstring>

namespace {

// Doubling stays within an int up to here.
constexpr unsigned long longestStream = 1UL << 30;

} // namespace

MemStream::MemStream() : mp_buffer(new Buffer) {}

bool MemStream::ReadBuffer(void* ip_destination, unsigned long i_length) {
    if (i_length > static_cast<unsigned long>(GetPendingReadLength()))
        return false;
    if (i_length == 0)
        return true;
    std::memcpy(ip_destination, GetReadBuffer(), i_length);
    mp_buffer->m_readIndex += static_cast<int>(i_length);
    return true;
}

bool MemStream::WriteBuffer(void const* ip_source, unsigned long i_length) {
    if (i_length >= longestStream - static_cast<unsigned long>(mp_buffer->m_writeIndex))
        return false;
    if (i_length == 0)
        return true;
    // A write that would exactly fill the buffer grows it too.
    const int l_end = mp_buffer->m_writeIndex + static_cast<int>(i_length);
    int l_capacity = mp_buffer->m_bufferSize;
    while (l_capacity <= l_end)
        l_capacity *= 2;
    Reserve(l_capacity);
    std::memcpy(GetWriteBuffer(), ip_source, i_length);
    mp_buffer->m_writeIndex = l_end;
    return true;
}

int MemStream::GetPendingReadLength() const {
    return mp_buffer->m_writeIndex - mp_buffer->m_readIndex;
}

const char* MemStream::GetReadBuffer() const {
    return mp_buffer->mp_bytes.get() + mp_buffer->m_readIndex;
}

std::string_view MemStream::GetPending() const {
    return {GetReadBuffer(), static_cast<std::size_t>(GetPendingReadLength())};
}

int MemStream::GetWriteIndex() const {
    return mp_buffer->m_writeIndex;
}

std::string_view MemStream::GetWritten() const {
    return {mp_buffer->mp_bytes.get(), static_cast<std::size_t>(mp_buffer->m_writeIndex)};
}

char* MemStream::GetWriteBuffer() {
    return mp_buffer->mp_bytes.get() + mp_buffer->m_writeIndex;
}

int MemStream::GetFreeCapacity() const {
    return mp_buffer->m_bufferSize - mp_buffer->m_writeIndex;
}

void MemStream::AdvanceWriteIndex(int i_length) {
    mp_buffer->m_writeIndex += i_length;
    TIDEWELL_CONTRACT(mp_buffer->m_writeIndex <= mp_buffer->m_bufferSize);
}

int MemStream::GetCapacity() const {
    return mp_buffer->m_bufferSize;
}

void MemStream::EnsureBufferCapacity(int i_capacity) {
    TIDEWELL_CONTRACT(mp_buffer->m_writeIndex == 0);
    Reserve(i_capacity);
}

void MemStream::Reserve(int i_capacity) {
    if (mp_buffer->m_bufferSize >= i_capacity)
        return;
    auto lp_bytes = std::make_unique_for_overwrite<char[]>(static_cast<std::size_t>(i_capacity));
    std::memcpy(lp_bytes.get(), mp_buffer->mp_bytes.get(), static_cast<std::size_t>(mp_buffer->m_writeIndex));
    mp_buffer->mp_bytes = std::move(lp_bytes);
    mp_buffer->m_bufferSize = i_capacity;
}

void MemStream::Clear() {
    mp_buffer->m_readIndex = 0;
    mp_buffer->m_writeIndex = 0;
}
