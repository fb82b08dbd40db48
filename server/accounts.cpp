#include "server/accounts.h"

#include "app/text.h"
#include "server/database.h"

#include <QVariant>

#include <algorithm>

namespace {

constexpr std::int64_t g_averagedReports = 20;

} // namespace

Accounts::Accounts(Database& i_database)
    : m_find(i_database.Connection()), m_add(i_database.Connection()), m_setSpeed(i_database.Connection()) {
    m_find.setForwardOnly(true);
    m_find.prepare(QStringLiteral("SELECT password, average_speed, speed_reports FROM account WHERE name = ?"));
    m_add.prepare(QStringLiteral("INSERT INTO account (name, password) VALUES (?, ?) ON CONFLICT DO NOTHING"));
    m_setSpeed.prepare(QStringLiteral("UPDATE account SET average_speed = ?, speed_reports = ? WHERE name = ?"));
}

std::optional<Account> Accounts::Find(std::string_view i_name) {
    m_find.bindValue(0, ToQString(i_name));
    std::optional<Account> l_account;
    if (m_find.exec() && m_find.next()) {
        l_account = Account{ToUtf8(m_find.value(0).toString()), m_find.value(1).toInt(), m_find.value(2).toLongLong()};
    }
    m_find.finish();
    return l_account;
}

Accounts::AddResult Accounts::Add(std::string_view i_name, const std::string& i_passwordHash) {
    m_add.bindValue(0, ToQString(i_name));
    m_add.bindValue(1, ToQString(i_passwordHash));
    if (!m_add.exec()) {
        return AddResult::Failed;
    }
    return m_add.numRowsAffected() == 1 ? AddResult::Added : AddResult::Exists;
}

void Accounts::RecordSpeed(std::string_view i_name, std::int32_t i_bytesPerSecond) {
    const std::optional<Account> l_account = Find(i_name);
    if (!l_account || i_bytesPerSecond < 0) {
        return;
    }
    const std::int64_t l_before = std::clamp<std::int64_t>(l_account->speedReports, 0, g_averagedReports - 1);
    const std::int64_t l_average = (l_account->averageSpeed * l_before + i_bytesPerSecond) / (l_before + 1);
    m_setSpeed.bindValue(0, static_cast<qlonglong>(l_average));
    m_setSpeed.bindValue(1, static_cast<qlonglong>(l_account->speedReports + 1));
    m_setSpeed.bindValue(2, ToQString(i_name));
    m_setSpeed.exec();
}
