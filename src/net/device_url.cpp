#include "net/device_url.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <string>

#include "net/limits.h"

namespace {

constexpr std::string_view c_scheme = "http://";
constexpr std::string_view c_location = "location:";

char Lower(char i_character) {
    return i_character >= 'A' && i_character <= 'Z' ? static_cast<char>(i_character - 'A' + 'a') : i_character;
}

bool StartsWith(std::string_view i_text, std::string_view i_lowerCase) {
    return i_text.size() >= i_lowerCase.size() &&
           std::equal(i_lowerCase.begin(), i_lowerCase.end(), i_text.begin(),
                      [](char i_expected, char i_found) { return i_expected == Lower(i_found); });
}

bool IsPrintable(std::string_view i_text) {
    return std::all_of(i_text.begin(), i_text.end(),
                       [](char i_character) { return i_character > ' ' && i_character < 0x7F; });
}

bool IsPort(std::string_view i_text) {
    long long l_port = 0;
    const auto [lp_end, l_error] = std::from_chars(i_text.data(), i_text.data() + i_text.size(), l_port);
    return l_error == std::errc() && lp_end == i_text.data() + i_text.size() && limits::IsConnectablePort(l_port);
}

} // namespace

std::optional<std::uint32_t> HostAddress(std::string_view i_url) {
    if (!StartsWith(i_url, c_scheme) || !IsPrintable(i_url))
        return std::nullopt;
    i_url.remove_prefix(c_scheme.size());
    const std::size_t l_path = i_url.find('/');
    if (l_path == std::string_view::npos)
        return std::nullopt;
    std::string_view l_host = i_url.substr(0, l_path);
    if (const std::size_t l_colon = l_host.find(':'); l_colon != std::string_view::npos) {
        if (!IsPort(l_host.substr(l_colon + 1)))
            return std::nullopt;
        l_host = l_host.substr(0, l_colon);
    }
    in_addr l_address;
    if (inet_pton(AF_INET, std::string(l_host).c_str(), &l_address) != 1)
        return std::nullopt;
    return ntohl(l_address.s_addr);
}

bool IsPrivateOrLinkLocal(std::uint32_t i_address) {
    return i_address >> 24 == 10 || i_address >> 20 == (172 << 4 | 1) || i_address >> 16 == (192 << 8 | 168) ||
           i_address >> 16 == (169 << 8 | 254);
}

std::string_view LocationOf(std::string_view i_answer) {
    while (!i_answer.empty()) {
        const std::size_t l_end = i_answer.find('\n');
        std::string_view l_line = i_answer.substr(0, l_end);
        i_answer.remove_prefix(l_end == std::string_view::npos ? i_answer.size() : l_end + 1);
        if (!StartsWith(l_line, c_location))
            continue;
        l_line.remove_prefix(c_location.size());
        const auto l_isSpace = [](char i_character) {
            return i_character == ' ' || i_character == '\t' || i_character == '\r';
        };
        while (!l_line.empty() && l_isSpace(l_line.front()))
            l_line.remove_prefix(1);
        while (!l_line.empty() && l_isSpace(l_line.back()))
            l_line.remove_suffix(1);
        return l_line;
    }
    return {};
}
