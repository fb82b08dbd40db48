// Finding names in a share list: how names are made comparable without regard to case, and what a typed text finds.
#pragma once

#include <QString>

#include <string>
#include <string_view>
#include <vector>

// UTF-8 in which letters that differ in case only are the same.
std::string FoldCase(std::string_view i_text);

// The words of a typed text, folded. They lie in the text, which must outlive them.
class FilterPieces {
public:
    explicit FilterPieces(const QString& i_text);

    const std::vector<std::string_view>& All() const { return m_pieces; }

private:
    std::string m_text;
    std::vector<std::string_view> m_pieces;
};

// Those that do not occur in the folded name.
std::vector<std::string_view> PiecesNotIn(std::string_view i_name, const std::vector<std::string_view>& i_pieces);

// Many folded names in one piece of memory, which is searched at one go.
class NameList {
public:
    void Add(std::string_view i_foldedName);
    // Whether one of the names holds every piece.
    bool HasNameWith(const std::vector<std::string_view>& i_pieces) const;

private:
    static constexpr char c_end = '\0'; // in no name: values of the store hold no zero byte

    std::string m_names; // each with c_end behind it
};
