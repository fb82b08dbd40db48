// Readers and writers of the wire encodings, on top of one virtual operation each.
//
//   bool                1 byte, 0 is false, anything else is true
//   int, unsigned       4 bytes, little-endian
//   64-bit integer      8 bytes, little-endian
//   string              4-byte length, then the bytes, no terminator
//   vector, set of T    4-byte count, then the elements
//   map of K to V       4-byte count, then the pairs
//   pair                first, then second
//
// A string's length and every count are at most limits::textLengthOrCount on reading. A read that fails returns
// false; scalars and strings keep their value then, containers hold what was read before the failure.
#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "net/limits.h"

static_assert(std::endian::native == std::endian::little, "scalars are copied raw from and to the wire");

class StreamReadable;
class StreamWritable;

// The integers that have a width on the wire. Unsigned 64-bit is left out on purpose: it would let a size_t
// through as eight bytes where a count takes four.
template <class T>
concept WireInteger = std::same_as<T, std::uint8_t> || std::same_as<T, std::int32_t> ||
    std::same_as<T, std::uint32_t> || std::same_as<T, long> || std::same_as<T, long long>;

class InputStream {
public:
    virtual ~InputStream() = default;
    // Copies exactly i_length bytes, or returns false and moves nothing.
    [[nodiscard]] virtual bool ReadBuffer(void* ip_destination, unsigned long i_length) = 0;

    // The text ends at its first zero byte; the bytes behind it are consumed all the same.
    [[nodiscard]] bool Read(std::string& o_text);
    [[nodiscard]] bool Read(bool& o_flag);
    [[nodiscard]] bool Read(StreamReadable& o_record);
    // A count; false when it is over the limit.
    [[nodiscard]] bool ReadCount(std::uint32_t& o_count);

    template <WireInteger T>
    [[nodiscard]] bool Read(T& o_number) {
        return ReadBuffer(&o_number, sizeof(T));
    }

    template <class A, class B>
    [[nodiscard]] bool Read(std::pair<A, B>& o_pair) {
        return Read(o_pair.first) && Read(o_pair.second);
    }

    template <class T>
    [[nodiscard]] bool Read(std::vector<T>& o_list) {
        o_list.clear();
        return ReadElements<T>([&o_list](T&& i_element) { o_list.push_back(std::move(i_element)); });
    }

    template <class T>
    [[nodiscard]] bool Read(std::set<T>& o_set) {
        o_set.clear();
        return ReadElements<T>([&o_set](T&& i_element) { o_set.insert(std::move(i_element)); });
    }

    // Of a repeated key the first value stays.
    template <class K, class V>
    [[nodiscard]] bool Read(std::map<K, V>& o_map) {
        o_map.clear();
        return ReadElements<std::pair<K, V>>([&o_map](std::pair<K, V>&& i_pair) { o_map.insert(std::move(i_pair)); });
    }

private:
    // Nothing is reserved by the count: memory follows the elements that are really there.
    template <class T, class Keep>
    bool ReadElements(Keep i_keep) {
        std::uint32_t l_count = 0;
        if (!ReadCount(l_count))
            return false;
        for (; l_count > 0; --l_count) {
            T l_element{};
            if (!Read(l_element))
                return false;
            i_keep(std::move(l_element));
        }
        return true;
    }
};

// A writer fails only when its sink does; a MemStream does not, short of 1 GiB.
class OutputStream {
public:
    virtual ~OutputStream() = default;
    virtual bool WriteBuffer(void const* ip_source, unsigned long i_length) = 0;

    bool Write(std::string const& i_text);
    bool Write(StreamWritable const& i_record);

    // Only a true bool: a pointer must not turn into one silently.
    template <std::same_as<bool> T>
    bool Write(T i_flag) {
        const std::uint8_t l_byte = i_flag ? 1 : 0;
        return WriteBuffer(&l_byte, 1);
    }

    template <WireInteger T>
    bool Write(T i_number) {
        return WriteBuffer(&i_number, sizeof(T));
    }

    template <class A, class B>
    bool Write(std::pair<A, B> const& i_pair) {
        return Write(i_pair.first) && Write(i_pair.second);
    }

    template <class T>
    bool Write(std::vector<T> const& i_list) {
        return WriteElements(i_list);
    }

    template <class T>
    bool Write(std::set<T> const& i_set) {
        return WriteElements(i_set);
    }

    template <class K, class V>
    bool Write(std::map<K, V> const& i_map) {
        return WriteElements(i_map);
    }

private:
    template <class Container>
    bool WriteElements(Container const& i_elements) {
        if (!Write(static_cast<std::uint32_t>(i_elements.size())))
            return false;
        for (auto const& l_element : i_elements) {
            if (!Write(l_element))
                return false;
        }
        return true;
    }
};

// A record that reads itself: stops at the first field that fails, and the fields before it keep what was read.
class StreamReadable {
public:
    virtual ~StreamReadable() = default;
    [[nodiscard]] virtual bool Read(InputStream& io_stream) = 0;
};

class StreamWritable {
public:
    virtual ~StreamWritable() = default;
    virtual bool Write(OutputStream& o_stream) const = 0;
};

class Persistent : public StreamReadable, public StreamWritable {};
