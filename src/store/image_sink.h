// Where the bytes of a store file go: into the file itself, or into memory until someone has time to write them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

class ImageSink {
public:
    ImageSink() = default;
    ImageSink(const ImageSink&) = delete;
    ImageSink& operator=(const ImageSink&) = delete;
    virtual ~ImageSink() = default;

    virtual void Write(std::string_view i_bytes) = 0;
    // 32 bits, least significant byte first.
    void WriteInt(std::int32_t i_number) {
        const std::array<char, 4> l_bytes = Encode(i_number);
        Write(std::string_view(l_bytes.data(), l_bytes.size()));
    }
    // Of the next byte written.
    virtual std::uint64_t Position() const = 0;
    // Overwrites a number written before.
    virtual void PatchInt(std::uint64_t i_position, std::int32_t i_number) = 0;

    static std::array<char, 4> Encode(std::int32_t i_number) {
        const auto l_number = static_cast<std::uint32_t>(i_number);
        return {static_cast<char>(l_number & 0xFF), static_cast<char>(l_number >> 8 & 0xFF),
                static_cast<char>(l_number >> 16 & 0xFF), static_cast<char>(l_number >> 24 & 0xFF)};
    }
};

class MemoryImage : public ImageSink {
public:
    void Write(std::string_view i_bytes) override { m_bytes += i_bytes; }
    std::uint64_t Position() const override { return m_bytes.size(); }
    void PatchInt(std::uint64_t i_position, std::int32_t i_number) override {
        const std::array<char, 4> l_bytes = Encode(i_number);
        m_bytes.replace(i_position, l_bytes.size(), l_bytes.data(), l_bytes.size());
    }

    std::string TakeBytes() { return std::move(m_bytes); }

private:
    std::string m_bytes;
};
