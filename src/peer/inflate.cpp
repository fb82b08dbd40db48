#include "peer/inflate.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t pieceSize = 32 * limits::kibibyte;

} // namespace

InflateStream::InflateStream(std::string_view i_compressed, std::size_t i_limit, const std::atomic<bool>* ip_stop)
    : m_limit(i_limit), mp_stop(ip_stop) {
    m_zlib.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(i_compressed.data())); // zlib does not write there
    m_zlib.avail_in = static_cast<uInt>(i_compressed.size());
    m_hasFailed = m_wasMemoryShort = inflateInit(&m_zlib) != Z_OK;
}

InflateStream::~InflateStream() {
    inflateEnd(&m_zlib);
}

bool InflateStream::ReadBuffer(void* ip_destination, unsigned long i_length) {
    if (i_length > m_limit)
        return false;
    while (m_window.size() - m_read < i_length) {
        if (!InflatePiece())
            return false;
    }
    if (m_hasFailed)
        return false;
    std::memcpy(ip_destination, m_window.data() + m_read, i_length);
    m_read += i_length;
    return true;
}

bool InflateStream::Finish() {
    do {
        m_read = m_window.size();
    } while (InflatePiece());
    return !m_hasFailed;
}

// False when there is no more: the stream has ended or failed.
bool InflateStream::InflatePiece() {
    m_hasFailed = m_hasFailed || (mp_stop != nullptr && *mp_stop);
    if (m_hasEnded || m_hasFailed)
        return false;
    m_window.erase(0, m_read);
    m_read = 0;
    const std::size_t l_kept = m_window.size();
    // One byte beyond the limit tells a stream that ends there from one that goes on.
    const std::size_t l_room = std::min(pieceSize, m_limit - m_inflated + 1);
    m_window.resize(l_kept + l_room);
    m_zlib.next_out = reinterpret_cast<Bytef*>(m_window.data() + l_kept);
    m_zlib.avail_out = static_cast<uInt>(l_room);
    const int l_result = inflate(&m_zlib, Z_NO_FLUSH);
    const std::size_t l_count = l_room - m_zlib.avail_out;
    m_window.resize(l_kept + l_count);
    m_inflated += l_count;

    m_hasEnded = l_result == Z_STREAM_END;
    m_wasMemoryShort = l_result == Z_MEM_ERROR;
    // Z_BUF_ERROR is a stream cut short: there is always room for output.
    m_hasFailed = m_inflated > m_limit || (l_result != Z_OK && l_result != Z_STREAM_END);
    return !m_hasFailed;
}

std::optional<MemStream> PackMessage(int i_code, const MemStream& i_body, const std::atomic<bool>* ip_stop) {
    constexpr std::size_t c_packedAtOnce = 256 * limits::kibibyte; // some 50 ms
    z_stream l_zlib{};
    if (deflateInit(&l_zlib, Z_BEST_COMPRESSION) != Z_OK)
        return std::nullopt;
    std::string_view l_plain = i_body.GetWritten();
    const uLong l_most = deflateBound(&l_zlib, static_cast<uLong>(l_plain.size()));
    MemStream l_message;
    l_message.Reserve(static_cast<int>(sizeof(std::int32_t) + l_most + 1));
    l_message.Write(std::int32_t{i_code});
    l_zlib.next_out = reinterpret_cast<Bytef*>(l_message.GetWriteBuffer());
    l_zlib.avail_out = static_cast<uInt>(l_most);
    int l_result = Z_OK;
    while (l_result == Z_OK && (ip_stop == nullptr || !*ip_stop)) {
        const std::string_view l_piece = l_plain.substr(0, c_packedAtOnce);
        l_plain.remove_prefix(l_piece.size());
        l_zlib.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(l_piece.data())); // zlib does not write there
        l_zlib.avail_in = static_cast<uInt>(l_piece.size());
        l_result = deflate(&l_zlib, l_plain.empty() ? Z_FINISH : Z_NO_FLUSH);
    }
    l_message.AdvanceWriteIndex(static_cast<int>(l_zlib.total_out));
    deflateEnd(&l_zlib);
    return l_result == Z_STREAM_END ? std::optional(l_message) : std::nullopt;
}
