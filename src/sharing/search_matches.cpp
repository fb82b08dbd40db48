#include "sharing/search_matches.h"

#include "net/limits.h"
#include "sharing/search_parser.h"

#include <absl/container/inlined_vector.h>

#include <algorithm>
#include <optional>
#include <span>
#include <utility>

namespace {

using Tokens = absl::InlinedVector<Item*, 8>;

// Empty if one of the words is not in the index.
Tokens FindTokens(const SearchWordSet& i_words) {
    Tokens l_tokens;
    const Type* const lp_type = d.GetType("search_token");
    for (const std::string_view l_word : i_words) {
        const ItemPtr l_token = lp_type->HasItem(l_word);
        if (!l_token)
            return {};
        l_tokens.push_back(l_token.Get());
    }
    return l_tokens;
}

class Matching {
public:
    Matching(const SearchParser& i_parser, absl::FunctionRef<ItemSet()> i_visibleRoots, FileRoots& io_fileRoots)
        : m_parts(i_parser.GetIncludedPartTokenSet()), m_excluded(i_parser.GetExcludedTokenSet()),
          m_askRoots(i_visibleRoots), m_fileRoots(io_fileRoots) {}

    // For the files that have all tokens, one after the other; true ends the search.
    bool Take(Item* ip_file) {
        if (!m_roots)
            AskRoots();
        if (m_roots->empty())
            return true;
        const FileRoots::Verdict l_verdict = VerdictByPlace(ip_file);
        if (l_verdict == FileRoots::Verdict::Hidden)
            return false;
        if (l_verdict == FileRoots::Verdict::Visible && !HasNameTests()) {
            m_matches.push_back(ip_file);
            return IsTooMuch();
        }
        SendFor(ip_file);
        m_batch.push_back(ip_file);
        return m_batch.size() == c_batch && LookAtBatch();
    }

    // True if so many files have the one word looked for that they need not be met one by one.
    bool IsTooCommon(std::span<Item* const> i_tokens) {
        if (i_tokens.size() != 1 || HasNameTests() || i_tokens[0]->CountItems("shared_file") <= c_mostSearchMatches)
            return false;
        AskRoots();
        return m_areAllVisible;
    }

    std::vector<Item*> Matches() {
        LookAtBatch();
        return IsTooMuch() ? std::vector<Item*>() : std::move(m_matches);
    }

private:
    static constexpr std::size_t c_batch = 16;

    // Nearly every file of a large share is out of the cache, and so are its directory and its name: all of a batch are
    // sent for before the first is looked at. What is looked at of an item may lie in two lines.
    static void SendFor(const Item* ip_item) {
        if (ip_item != nullptr) { // only an edited store file has files of no place or name
            __builtin_prefetch(ip_item);
            __builtin_prefetch(ip_item + 1);
        }
    }

    bool LookAtBatch() {
        for (const Item* lp_file : m_batch) {
            SendFor(lp_file->HasItem("shared_file_folder").Get());
            if (HasNameTests())
                SendFor(lp_file->HasItem("shared_file_name").Get());
        }
        for (Item* lp_file : m_batch) {
            if (!IsTooMuch() && IsVisible(lp_file) && IsNameRight(lp_file))
                m_matches.push_back(lp_file);
        }
        m_batch.clear();
        return IsTooMuch();
    }

    // A text of tens of thousands of words would be held against every file of the share.
    bool IsTooMuch() const { return m_matches.size() > c_mostSearchMatches || m_wordTests > limits::searchWordTests; }

    void AskRoots() {
        m_roots = m_askRoots();
        m_areAllVisible = m_roots->size() == d.GetType("shared_folder")->CountItems();
        if (!m_areAllVisible && !m_roots->empty())
            m_sight.emplace(m_fileRoots, *m_roots);
    }

    // Every file is below some root: who may see all roots may see it.
    FileRoots::Verdict VerdictByPlace(const Item* ip_file) {
        return m_areAllVisible ? FileRoots::Verdict::Visible : m_sight->Of(ip_file);
    }

    bool HasNameTests() const { return !m_parts.empty() || !m_excluded.empty(); }

    bool IsNameRight(const Item* ip_file) {
        if (!HasNameTests())
            return true;
        const std::string_view l_name = ip_file->HasItem("shared_file_name").AsView();
        const auto l_occurs = [&](std::string_view i_word) {
            ++m_wordTests;
            return l_name.find(i_word) != std::string_view::npos;
        };
        return std::none_of(m_excluded.begin(), m_excluded.end(), l_occurs) &&
               std::all_of(m_parts.begin(), m_parts.end(), l_occurs);
    }

    // Files of one directory mostly follow each other.
    bool IsVisible(const Item* ip_file) {
        if (VerdictByPlace(ip_file) == FileRoots::Verdict::Visible)
            return true;
        Item* const lp_folder = ip_file->HasItem("shared_file_folder").Get();
        if (lp_folder != mp_folder) {
            mp_folder = lp_folder;
            m_isFolderVisible = lp_folder != nullptr &&
                                std::any_of(m_roots->begin(), m_roots->end(),
                                            [&](Item* ip_root) { return lp_folder->IsConnected(ItemPtr(ip_root)); });
        }
        return m_isFolderVisible;
    }

    const SearchWordSet& m_parts;
    const SearchWordSet& m_excluded;
    const absl::FunctionRef<ItemSet()> m_askRoots;
    FileRoots& m_fileRoots;
    std::optional<ItemSet> m_roots;
    bool m_areAllVisible = false;
    std::optional<FileRoots::Sight> m_sight;     // of who may see some of the roots
    absl::InlinedVector<Item*, c_batch> m_batch; // not yet looked at
    std::vector<Item*> m_matches;
    std::size_t m_wordTests = 0;
    // The directory looked at last, and the verdict on it.
    const Item* mp_folder = nullptr;
    bool m_isFolderVisible = false;
};

} // namespace

std::vector<Item*> FindSearchMatches(std::string_view i_text, absl::FunctionRef<ItemSet()> i_visibleRoots,
                                     FileRoots& io_fileRoots) {
    SearchParser l_parser;
    if (!l_parser.SetSearchText(i_text))
        return {};
    const Tokens l_tokens = FindTokens(l_parser.GetIncludedTokenSet());
    Matching l_matching(l_parser, i_visibleRoots, io_fileRoots);
    if (l_matching.IsTooCommon(l_tokens))
        return {};
    d.AnyOfSubset(l_tokens, "shared_file", [&](Item* ip_file) { return l_matching.Take(ip_file); });
    return l_matching.Matches();
}
