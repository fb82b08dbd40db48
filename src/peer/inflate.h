// The compressed peer messages: all of the frame behind the code is one zlib stream with no length before it.
#pragma once

#include <atomic>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include <zlib.h>

#include "net/mem_stream.h"

// Inflates while it is read, piece by piece, so that memory follows what the reader keeps and never what the sender
// packed: zlib packs zeros a thousand to one.
class InflateStream : public InputStream {
public:
    // i_compressed must outlive the stream. Bytes behind the end of the zlib stream are ignored. Beyond i_limit
    // inflated bytes the stream counts as one that failed to inflate, and so it does once ip_stop, if given, is set.
    InflateStream(std::string_view i_compressed, std::size_t i_limit, const std::atomic<bool>* ip_stop = nullptr);
    ~InflateStream() override;
    InflateStream(const InflateStream&) = delete;
    InflateStream& operator=(const InflateStream&) = delete;

    [[nodiscard]] bool ReadBuffer(void* ip_destination, unsigned long i_length) override;

    // Inflates the rest without keeping it; true if the whole stream was sound, complete and within the limit. A reader
    // keeps what it has read only then: a stream that fails at its end is worth nothing from its start.
    [[nodiscard]] bool Finish();
    // Bytes so far, read or not.
    [[nodiscard]] std::size_t Inflated() const { return m_inflated; }
    // True when it failed for want of memory: no fault of the sender.
    [[nodiscard]] bool WasMemoryShort() const { return m_wasMemoryShort; }

private:
    bool InflatePiece();

    z_stream m_zlib{};
    std::string m_window; // inflated and not yet read: the bytes from m_read on
    std::size_t m_read = 0;
    std::size_t m_inflated = 0;
    const std::size_t m_limit;
    const std::atomic<bool>* const mp_stop;
    bool m_hasEnded = false;
    bool m_hasFailed = false;
    bool m_wasMemoryShort = false;
};

// The message of code i_code whose plain body is i_body: the code, then the body packed at level 9. Empty when memory
// is short, or when ip_stop, if given, is set on the way.
[[nodiscard]] std::optional<MemStream> PackMessage(int i_code, const MemStream& i_body,
                                                   const std::atomic<bool>* ip_stop = nullptr);
