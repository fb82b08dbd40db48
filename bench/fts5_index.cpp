#include "fts5_index.h"

#include "sharing/search_matches.h"
#include "store/data.h"

#include <cstdio>
#include <cstdlib>

#include <sqlite3.h>

namespace {

// FTS5 cuts at all but letters and digits: the other marks become letters, so that its tokens are the index's.
std::string OneWord(std::string_view i_token) {
    std::string l_word;
    for (const char l_byte : i_token) {
        if (l_byte == '.' || l_byte == '-')
            l_word += l_byte == '.' ? "XDOTX" : "XDASHX";
        else
            l_word += l_byte;
    }
    return l_word;
}

} // namespace

Fts5Index::Fts5Index() {
    Check(sqlite3_open(":memory:", &mp_base) == SQLITE_OK);
    Do("CREATE VIRTUAL TABLE files USING fts5(tokens, content='', columnsize=0, detail='none', tokenize='ascii')");
    Do("BEGIN");
    sqlite3_stmt* const lp_insert = Prepare("INSERT INTO files(rowid, tokens) VALUES(?, ?)");
    sqlite3_int64 l_row = 0;
    for (Item* lp_file : g("shared_file")) {
        std::string l_tokens;
        for (Item* lp_token : lp_file->GetItems("search_token"))
            l_tokens += OneWord(lp_token->AsView()) + " ";
        sqlite3_bind_int64(lp_insert, 1, ++l_row);
        sqlite3_bind_text(lp_insert, 2, l_tokens.data(), static_cast<int>(l_tokens.size()), SQLITE_STATIC);
        Check(sqlite3_step(lp_insert) == SQLITE_DONE);
        sqlite3_reset(lp_insert);
    }
    sqlite3_finalize(lp_insert);
    Do("COMMIT");
    Do("INSERT INTO files(files) VALUES('optimize')");
    const std::string l_search =
        "SELECT rowid FROM files WHERE files MATCH ? LIMIT " + std::to_string(c_mostSearchMatches + 1);
    mp_search = Prepare(l_search.c_str());
}

Fts5Index::~Fts5Index() {
    sqlite3_finalize(mp_search);
    sqlite3_close(mp_base);
}

std::string Fts5Index::Expression(const std::vector<std::string>& i_words, const std::string& i_excluded) {
    std::string l_all;
    for (const std::string& l_word : i_words)
        l_all += (l_all.empty() ? "" : " AND ") + OneWord(l_word);
    return i_excluded.empty() ? l_all : "(" + l_all + ") NOT " + OneWord(i_excluded);
}

int Fts5Index::Count(std::string_view i_expression) {
    sqlite3_bind_text(mp_search, 1, i_expression.data(), static_cast<int>(i_expression.size()), SQLITE_STATIC);
    int l_count = 0;
    int l_state;
    while ((l_state = sqlite3_step(mp_search)) == SQLITE_ROW)
        ++l_count;
    Check(l_state == SQLITE_DONE);
    sqlite3_reset(mp_search);
    return l_count;
}

void Fts5Index::Check(bool i_isGood) const {
    if (!i_isGood) {
        std::fprintf(stderr, "FTS5: %s\n", sqlite3_errmsg(mp_base));
        std::exit(1);
    }
}

void Fts5Index::Do(const char* ip_sql) const {
    Check(sqlite3_exec(mp_base, ip_sql, nullptr, nullptr, nullptr) == SQLITE_OK);
}

sqlite3_stmt* Fts5Index::Prepare(const char* ip_sql) const {
    sqlite3_stmt* lp_statement = nullptr;
    Check(sqlite3_prepare_v2(mp_base, ip_sql, -1, &lp_statement, nullptr) == SQLITE_OK);
    return lp_statement;
}
