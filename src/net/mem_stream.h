// A growing buffer of bytes that is written at its end and read from its start. A message is built in a fresh one; a
// received message is read out of one.
//
//        0            read index        m_writeIndex       m_bufferSize
//        | already read   | pending         | free             |
//
// A copy is a second handle on the same bytes and the same two indices. Handles stay on one thread.
#pragma once

#include <memory>
#include <string_view>

#include "net/rcptr.h"
#include "net/streams.h"

class MemStream : public virtual InputStream, public virtual OutputStream {
public:
    MemStream();

    // The typed readers and writers of both bases, side by side with the raw ones.
    using InputStream::Read;
    using OutputStream::Write;

    bool ReadBuffer(void* ip_destination, unsigned long i_length) override;
    // True, unless the stream would pass 1 GiB: then nothing is written.
    bool WriteBuffer(void const* ip_source, unsigned long i_length) override;

    [[nodiscard]] int GetPendingReadLength() const;
    // The pending bytes; valid until the next write or EnsureBufferCapacity.
    [[nodiscard]] const char* GetReadBuffer() const;
    [[nodiscard]] std::string_view GetPending() const;

    // All that was written, read or not; valid as long as GetReadBuffer.
    [[nodiscard]] int GetWriteIndex() const;
    [[nodiscard]] std::string_view GetWritten() const;

    // For bytes that come straight from a socket: where to put them, how many there is room for, and the notice that
    // they are there.
    [[nodiscard]] char* GetWriteBuffer();
    [[nodiscard]] int GetFreeCapacity() const;
    void AdvanceWriteIndex(int i_length);

    [[nodiscard]] int GetCapacity() const;
    // Only before the first write: at least this capacity, exactly this if the present one is smaller.
    void EnsureBufferCapacity(int i_capacity);
    // Exactly this capacity if the present one is smaller; keeps what was written.
    void Reserve(int i_capacity);

    // Both indices to 0; the capacity stays.
    void Clear();

private:
    struct Buffer {
        int m_readIndex = 0;
        int m_writeIndex = 0;
        int m_bufferSize = initialCapacity;
        std::unique_ptr<char[]> mp_bytes = std::make_unique_for_overwrite<char[]>(initialCapacity);
    };
    static constexpr int initialCapacity = 256;

    rcptr<Buffer> mp_buffer;
};
