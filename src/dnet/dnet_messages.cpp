#include "dnet/dnet_messages.h"

namespace {

constexpr std::int32_t fileSearch = 49;

MemStream BodyOf(DNetCode i_code) {
    MemStream l_body;
    l_body.Write(static_cast<std::uint8_t>(i_code));
    return l_body;
}

} // namespace

std::optional<DNetCode> DecodeDNetCode(InputStream& io_body) {
    std::uint8_t l_code = 0;
    if (!io_body.Read(l_code))
        return std::nullopt;
    return static_cast<DNetCode>(l_code);
}

DNetSearchFields DecodeDNetSearch(InputStream& io_body) {
    std::int32_t l_innerCode = 0;
    if (!io_body.Read(l_innerCode))
        return {};
    if (l_innerCode != fileSearch)
        return {true, std::nullopt};
    DNetSearch l_search;
    if (!io_body.Read(l_search.user) || !io_body.Read(l_search.token) || !io_body.Read(l_search.text))
        return {};
    return {true, std::move(l_search)};
}

std::optional<std::int32_t> DecodeDNetNumber(InputStream& io_body) {
    std::int32_t l_number = 0;
    if (!io_body.Read(l_number))
        return std::nullopt;
    return l_number;
}

std::optional<std::string> DecodeDNetGroupLeader(InputStream& io_body) {
    std::string l_leader;
    if (!io_body.Read(l_leader))
        return std::nullopt;
    return l_leader;
}

MemStream EncodeDNetSearch(const DNetSearch& i_search) {
    MemStream l_body = BodyOf(DNetCode::Search);
    l_body.Write(fileSearch);
    l_body.Write(i_search.user);
    l_body.Write(i_search.token);
    l_body.Write(i_search.text);
    return l_body;
}

MemStream EncodeDNetLevel(std::int32_t i_level) {
    MemStream l_body = BodyOf(DNetCode::Level);
    l_body.Write(i_level);
    return l_body;
}

MemStream EncodeDNetGroupLeader(const std::string& i_leader) {
    MemStream l_body = BodyOf(DNetCode::GroupLeader);
    l_body.Write(i_leader);
    return l_body;
}

MemStream EncodeDNetChildDepth(std::int32_t i_depth) {
    MemStream l_body = BodyOf(DNetCode::ChildDepth);
    l_body.Write(i_depth);
    return l_body;
}
