// The registered users: name, password hash, and the average of the transfer speeds that they have reported.
#pragma once

#include <QSqlQuery>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

class Database;

struct Account {
    std::string passwordHash;
    std::int32_t averageSpeed = 0; // bytes per second
    std::int64_t speedReports = 0;
};

class Accounts {
public:
    enum class AddResult {
        Added,
        Exists,
        Failed // the data file did not take it
    };

    explicit Accounts(Database& i_database);

    std::optional<Account> Find(std::string_view i_name);
    [[nodiscard]] AddResult Add(std::string_view i_name, const std::string& i_passwordHash);

    // Takes one finished transfer into the average: the plain mean of the first 20 reports, and from then on each
    // report moves it by a twentieth, so that a changed line shows. Speeds below 0 are dropped.
    void RecordSpeed(std::string_view i_name, std::int32_t i_bytesPerSecond);

private:
    QSqlQuery m_find;
    QSqlQuery m_add;
    QSqlQuery m_setSpeed;
};
