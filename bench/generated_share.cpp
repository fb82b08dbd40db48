#include "generated_share.h"

#include "sharing/search_index.h"
#include "store/data.h"

#include <cmath>

namespace {

constexpr int c_vocabulary = 150'000;
constexpr int c_filesOfAlbum = 12;
constexpr int c_albumsOfArtist = 8;

Item* RootOf(int i_file) {
    Item* const lp_root = d.GetType("shared_folder")->GetItem(i_file < c_listedFiles ? c_listedRoot : c_archiveRoot);
    lp_root->NewItem("shared_public");
    return lp_root;
}

void MakeAlbum(TitleWords& io_words, SearchTokenCutter& io_cutter, const std::string& i_artist, int i_first,
               int i_files) {
    const auto l_words = [&](int i_count) {
        std::string l_text = io_words.Any();
        while (--i_count > 0)
            l_text += " " + io_words.Any();
        return l_text;
    };
    const Data::Operation l_walking(d);
    Item* const lp_root = RootOf(i_first);
    Item* const lp_folder =
        d.GetType("shared_file_folder")->GetItem(lp_root->AsString() + "/" + i_artist + "/" + l_words(3));
    lp_folder->Connect(lp_root);
    FolderIndexer l_indexer(io_cutter, lp_folder);
    for (int l_track = 1; l_track <= i_files; ++l_track) {
        const std::string l_name = std::to_string(l_track) + " - " + l_words(4) + ".mp3";
        const ItemPtr l_file = lp_folder->NewItem("shared_file");
        l_file.Connect(d.GetType("shared_file_name")->GetItem(l_name));
        l_file.Connect(d.GetType("shared_file_size")->GetItem(3'000'000 + (i_first + l_track) * 104'729LL % 4'000'000));
        l_indexer.TokenizeSharedFile(l_file.Get(), l_name);
    }
}

} // namespace

TitleWords::TitleWords() {
    static const char* const l_syllables[] = {"ba", "cor", "di", "el", "fa",  "gon", "hi", "jur", "ka", "lem",
                                              "mi", "nor", "o",  "pa", "qui", "ras", "so", "tur", "u",  "ven"};
    for (int l_word = 0; l_word < c_vocabulary; ++l_word) {
        std::string l_text;
        for (int l_rest = l_word + 400; l_rest > 0; l_rest /= 20)
            l_text += l_syllables[l_rest % 20];
        m_words.push_back(l_text);
    }
}

const std::string& TitleWords::Any() {
    const double l_rank = std::pow(static_cast<double>(c_vocabulary), m_uniform(m_random));
    return m_words[static_cast<std::size_t>(l_rank) - 1];
}

void MakeShare(int i_files) {
    TitleWords l_words;
    SearchTokenCutter l_cutter;
    std::string l_artist;
    for (int l_file = 0; l_file < i_files; l_file += c_filesOfAlbum) {
        if (l_file % (c_filesOfAlbum * c_albumsOfArtist) == 0)
            l_artist = l_words.Any() + " " + l_words.Any();
        MakeAlbum(l_words, l_cutter, l_artist, l_file, std::min(c_filesOfAlbum, i_files - l_file));
    }
}
