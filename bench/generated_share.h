// A share made up of words, put into the store as a walk over a disk would: for benchmarks of what is done with one.
#pragma once

#include <random>
#include <string>
#include <vector>

// The managers that sharing stands on exist by now. The first c_listedFiles are under a root of their own, the others
// under c_archiveRoot; everyone may see both. Twelve files a folder, some 15 tokens a file.
inline constexpr const char* c_listedRoot = "/srv/music";
inline constexpr const char* c_archiveRoot = "/srv/archive";
inline constexpr int c_listedFiles = 100'000;

void MakeShare(int i_files);

// Words as titles have them: a few of them everywhere, most rarely (the frequency falls with the rank).
class TitleWords {
public:
    TitleWords();
    const std::string& Any();

private:
    std::mt19937 m_random{7};
    std::uniform_real_distribution<double> m_uniform{0, 1};
    std::vector<std::string> m_words; // the most frequent first
};
