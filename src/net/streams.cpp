#include "net/streams.h"

#include <algorithm>

bool InputStream::Read(std::string& o_text) {
    std::uint32_t l_length = 0;
    if (!ReadCount(l_length))
        return false;
    // At most 128 KiB, so the announced length may be trusted for as long as this one read takes.
    std::string l_text(l_length, '\0');
    if (!ReadBuffer(l_text.data(), l_length))
        return false;
    l_text.resize(std::min(l_text.find('\0'), l_text.size()));
    o_text = std::move(l_text);
    return true;
}

bool InputStream::Read(bool& o_flag) {
    std::uint8_t l_byte = 0;
    if (!ReadBuffer(&l_byte, 1))
        return false;
    o_flag = l_byte != 0;
    return true;
}

bool InputStream::Read(StreamReadable& o_record) {
    return o_record.Read(*this);
}

bool InputStream::ReadCount(std::uint32_t& o_count) {
    return ReadBuffer(&o_count, sizeof(o_count)) && o_count <= limits::textLengthOrCount;
}

bool OutputStream::Write(std::string const& i_text) {
    return Write(static_cast<std::uint32_t>(i_text.size())) && WriteBuffer(i_text.data(), i_text.size());
}

bool OutputStream::Write(StreamWritable const& i_record) {
    return i_record.Write(*this);
}
