// SQLite's FTS5 in memory over the tokens of the shared files in the store: the yardstick of the search index. Kept as
// small and fast as it gets: no content, no positions, no sizes, merged into one tree.
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

class Fts5Index {
public:
    Fts5Index(); // a fault of SQLite ends the program
    ~Fts5Index();
    Fts5Index(const Fts5Index&) = delete;
    Fts5Index& operator=(const Fts5Index&) = delete;

    // The expression for files with all of the words but not the excluded one, if it is not empty.
    static std::string Expression(const std::vector<std::string>& i_words, const std::string& i_excluded = {});
    // How many files match, counted to one more than a search may answer with; their names are not fetched.
    int Count(std::string_view i_expression);

private:
    void Check(bool i_isGood) const;
    void Do(const char* ip_sql) const;
    sqlite3_stmt* Prepare(const char* ip_sql) const;

    sqlite3* mp_base = nullptr;
    sqlite3_stmt* mp_search = nullptr;
};
