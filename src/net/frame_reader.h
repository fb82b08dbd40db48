// Length-prefixed frames out of a stream of bytes, for server, peer and distributed sockets alike.
//
//   0                4                                4 + length
//   | length (int)   | body, length bytes                 | next frame ...
//
// The length is judged before a byte of the body is kept, and the buffer grows with the bytes that have arrived, never
// with the length announced. The reader never asks for bytes beyond the frame under way, so that what lies behind it
// stays with its source.
//
//   while (reader.TakeFrom(*socket) == FrameReader::Status::FrameReady) {
//       handle(reader.Frame());
//       reader.Reset();
//   }
#pragma once

#include <cstddef>
#include <cstdint>

#include "net/mem_stream.h"

class FrameReader {
public:
    enum class Status {
        NeedMore,
        FrameReady, // Frame() is whole; nothing more is taken until Reset()
        BadLength,  // negative or above the limit; lasts until Reset(), and the connection has no future
    };

    // i_limit: the longest body accepted, in bytes.
    explicit FrameReader(std::size_t i_limit);
    // A copy would share the buffer of the frame under way.
    FrameReader(const FrameReader&) = delete;
    FrameReader& operator=(const FrameReader&) = delete;

    [[nodiscard]] Status GetStatus() const { return m_status; }

    // How many bytes may be given now: the rest of the length or of the body, one piece at most; 0 unless NeedMore.
    [[nodiscard]] std::size_t Wanted() const;
    // Takes i_length bytes, at most Wanted().
    Status Take(const char* ip_bytes, std::size_t i_length);

    // The same without a copy: room for Wanted() bytes, and the notice that i_length of them are there.
    [[nodiscard]] char* Place();
    Status Placed(std::size_t i_length);

    // Reads from a device with Qt's read(char*, size) until the frame is ready, bad, or the device has no more for now.
    template <class Device>
    Status TakeFrom(Device& io_device) {
        while (m_status == Status::NeedMore) {
            const auto l_count = io_device.read(Place(), static_cast<std::int64_t>(Wanted()));
            if (l_count <= 0)
                break;
            Placed(static_cast<std::size_t>(l_count));
        }
        return m_status;
    }

    // The body as far as it has arrived; whole when FrameReady.
    [[nodiscard]] MemStream& Frame() { return m_frame; }
    // True once the length has arrived.
    [[nodiscard]] bool IsLengthKnown() const { return m_headerLength == sizeof(m_header); }
    // The announced length of the body; 0 before it is known. Never beyond the limit unless BadLength.
    [[nodiscard]] std::uint32_t Length() const { return IsLengthKnown() ? m_header : 0; }

    // Forgets the frame under way and is ready for the next. The buffer is kept for it, unless it has grown large.
    void Reset();
    // As Reset, with a buffer of its own: handles on the last frame stay good.
    void Renew();

    // Holds from now on. A frame at hand, whole or under way, whose length is beyond it becomes BadLength at once: a
    // caller that learns from the first bytes what kind of frame it is can narrow the limit then.
    void SetLimit(std::size_t i_limit);

private:
    void Judge();
    // Of the buffer, for the next bytes of the body; at most the body's length.
    [[nodiscard]] std::size_t CapacityForMore() const;

    std::size_t m_limit;
    Status m_status = Status::NeedMore;
    std::uint32_t m_header = 0;     // the length, filled byte by byte
    std::size_t m_headerLength = 0; // bytes of m_header that have arrived
    MemStream m_frame;
};

// The body with its length in front, ready for one write to a socket.
[[nodiscard]] MemStream MakeFrame(const MemStream& i_body);
