// Bytes of messages for tests: built, cut and spoilt by hand.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "net/mem_stream.h"
#include "peer/inflate.h"

inline std::string BytesOf(const MemStream& i_stream) {
    return std::string(i_stream.GetWritten());
}

inline MemStream StreamOf(std::string_view i_bytes) {
    MemStream l_stream;
    l_stream.WriteBuffer(i_bytes.data(), i_bytes.size());
    return l_stream;
}

// Little-endian, as on the wire.
inline std::string Int32(std::uint32_t i_number) {
    return {reinterpret_cast<const char*>(&i_number), sizeof(i_number)};
}

inline std::string Text(std::string_view i_text) {
    return Int32(static_cast<std::uint32_t>(i_text.size())) + std::string(i_text);
}

// The zlib stream alone, without the code in front.
inline std::string Packed(std::string_view i_plain) {
    return BytesOf(PackMessage(0, StreamOf(i_plain)).value()).substr(4);
}

// As Packed of i_plain and i_zeros zero bytes behind it, but packed fast.
inline std::string PackedBomb(std::string_view i_plain, std::size_t i_zeros) {
    const std::string l_zeros(1 << 20, '\0');
    std::string l_packed(i_zeros / 100 + 2 * i_plain.size() + 1000, '\0');
    z_stream l_zlib{};
    deflateInit(&l_zlib, Z_BEST_SPEED);
    l_zlib.next_out = reinterpret_cast<Bytef*>(l_packed.data());
    l_zlib.avail_out = static_cast<uInt>(l_packed.size());
    const auto l_feed = [&l_zlib](std::string_view i_bytes, int i_flush) {
        l_zlib.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(i_bytes.data()));
        l_zlib.avail_in = static_cast<uInt>(i_bytes.size());
        deflate(&l_zlib, i_flush);
    };
    l_feed(i_plain, Z_NO_FLUSH);
    for (; i_zeros > l_zeros.size(); i_zeros -= l_zeros.size())
        l_feed(l_zeros, Z_NO_FLUSH);
    l_feed(std::string_view(l_zeros).substr(0, i_zeros), Z_FINISH);
    l_packed.resize(l_zlib.total_out);
    deflateEnd(&l_zlib);
    return l_packed;
}

// The numbers that a length or count may lie with.
inline constexpr std::uint32_t lyingNumbers[] = {0x20001, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
