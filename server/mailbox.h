// Private messages on their way: each one is kept in the data file until its reader has acknowledged it, so that it
// reaches someone who is offline, and survives a lost connection and a restart of the server.
#pragma once

#include "server/limits.h"

#include <QSqlQuery>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class Database;

struct KeptMessage {
    std::int32_t id = 0;   // as the reader sees and acknowledges it; never below 0
    std::int32_t time = 0; // Unix seconds, when the server took it
    std::string sender;
    std::string text; // bytes, as sent
};

class Mailbox {
public:
    Mailbox(Database& i_database, const Limits& i_limits);

    // Nullopt when the recipient has no account, when too much waits for them already, or when the data file did not
    // take it. The newest message is the one that is lost, so a flood pushes nothing out.
    [[nodiscard]] std::optional<KeptMessage> Keep(std::string_view i_recipient, std::string_view i_sender,
                                                  const std::string& i_text);
    std::vector<KeptMessage> Waiting(std::string_view i_recipient); // oldest first
    void Acknowledge(std::string_view i_recipient, std::int32_t i_id);

private:
    bool HasRoomFor(std::string_view i_recipient, std::string_view i_sender, std::size_t i_bytes);

    const Limits m_limits;
    QSqlQuery m_count;
    QSqlQuery m_insert;
    QSqlQuery m_select;
    QSqlQuery m_delete;
};
