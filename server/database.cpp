#include "server/database.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>
#include <QVariant>

namespace {

constexpr int g_tablesVersion = 1;

} // namespace

Database::Database() : m_connectionName(QUuid::createUuid().toString()) {}

Database::~Database() {
    if (QSqlDatabase::contains(m_connectionName)) {
        Connection().close();
        QSqlDatabase::removeDatabase(m_connectionName);
    }
}

bool Database::Open(const QString& i_fileName, QString& o_error) {
    QSqlDatabase l_database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
    l_database.setDatabaseName(i_fileName);
    QString l_reason;
    if (!l_database.open()) {
        l_reason = l_database.lastError().databaseText();
    }
    // NORMAL keeps every commit through a kill of the process, and spares a sync of the disk at each message.
    else if (Execute(QStringLiteral("PRAGMA journal_mode = WAL"), l_reason) &&
             Execute(QStringLiteral("PRAGMA synchronous = NORMAL"), l_reason) &&
             Execute(QStringLiteral("PRAGMA foreign_keys = ON"), l_reason) && CreateTables(l_reason)) {
        return true;
    }
    o_error = QStringLiteral("The data file %1 cannot be used: %2.").arg(i_fileName, l_reason);
    return false;
}

QSqlDatabase Database::Connection() const {
    return QSqlDatabase::database(m_connectionName, false);
}

bool Database::Execute(const QString& i_statement, QString& o_error) {
    QSqlQuery l_query(Connection());
    if (l_query.exec(i_statement)) {
        return true;
    }
    o_error = l_query.lastError().databaseText();
    return false;
}

bool Database::CreateTables(QString& o_error) {
    QSqlQuery l_version(Connection());
    if (!l_version.exec(QStringLiteral("PRAGMA user_version")) || !l_version.next()) {
        o_error = l_version.lastError().databaseText();
        return false;
    }
    const int l_found = l_version.value(0).toInt();
    l_version.finish();
    if (l_found == g_tablesVersion) {
        return true;
    }
    if (l_found > g_tablesVersion) {
        o_error = QStringLiteral("it was written by a newer server");
        return false;
    }
    return Execute(QStringLiteral("BEGIN IMMEDIATE"), o_error) &&
           Execute(QStringLiteral("CREATE TABLE account (name TEXT PRIMARY KEY NOT NULL, password TEXT NOT NULL, "
                                  "average_speed INTEGER NOT NULL DEFAULT 0, "
                                  "speed_reports INTEGER NOT NULL DEFAULT 0) WITHOUT ROWID"),
                   o_error) &&
           // AUTOINCREMENT: an id is never used again, so a late acknowledgement cannot hit a newer message.
           Execute(QStringLiteral("CREATE TABLE message (id INTEGER PRIMARY KEY AUTOINCREMENT, "
                                  "recipient TEXT NOT NULL REFERENCES account, "
                                  "sender TEXT NOT NULL REFERENCES account, "
                                  "sent INTEGER NOT NULL, text BLOB NOT NULL)"),
                   o_error) &&
           Execute(QStringLiteral("CREATE INDEX message_of_recipient ON message (recipient)"), o_error) &&
           Execute(QStringLiteral("PRAGMA user_version = %1").arg(g_tablesVersion), o_error) &&
           Execute(QStringLiteral("COMMIT"), o_error);
}
