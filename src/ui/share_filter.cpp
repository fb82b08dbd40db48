#include "ui/share_filter.h"

#include "app/text.h"

#include <absl/strings/ascii.h>

#include <algorithm>

std::string FoldCase(std::string_view i_text) {
    if (!std::all_of(i_text.begin(), i_text.end(), absl::ascii_isascii)) {
        return ToUtf8(ToQString(i_text).toCaseFolded());
    }
    std::string l_text(i_text);
    absl::AsciiStrToLower(&l_text);
    return l_text;
}

FilterPieces::FilterPieces(const QString& i_text) : m_text(FoldCase(ToUtf8(i_text))) {
    const std::string_view l_text(m_text);
    for (std::size_t l_begin = 0; l_begin < l_text.size();) {
        const std::size_t l_end = std::min(l_text.find(' ', l_begin), l_text.size());
        if (l_end > l_begin) {
            m_pieces.push_back(l_text.substr(l_begin, l_end - l_begin));
        }
        l_begin = l_end + 1;
    }
}

std::vector<std::string_view> PiecesNotIn(std::string_view i_name, const std::vector<std::string_view>& i_pieces) {
    std::vector<std::string_view> l_rest;
    for (const std::string_view l_piece : i_pieces) {
        if (i_name.find(l_piece) == std::string_view::npos) {
            l_rest.push_back(l_piece);
        }
    }
    return l_rest;
}

void NameList::Add(std::string_view i_foldedName) {
    m_names += i_foldedName;
    m_names += c_end;
}

bool NameList::HasNameWith(const std::vector<std::string_view>& i_pieces) const {
    const std::string_view l_names(m_names);
    if (i_pieces.empty()) {
        return !l_names.empty();
    }
    std::size_t l_found = l_names.find(i_pieces.front());
    while (l_found != std::string_view::npos) {
        const std::size_t l_before = l_found == 0 ? std::string_view::npos : l_names.rfind(c_end, l_found - 1);
        const std::size_t l_begin = l_before == std::string_view::npos ? 0 : l_before + 1;
        const std::size_t l_end = l_names.find(c_end, l_found);
        if (PiecesNotIn(l_names.substr(l_begin, l_end - l_begin), i_pieces).empty()) {
            return true;
        }
        l_found = l_names.find(i_pieces.front(), l_end);
    }
    return false;
}
