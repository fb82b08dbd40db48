// The server's data file: one SQLite database with the accounts and the messages that wait for their readers.
#pragma once

#include <QSqlDatabase>
#include <QString>

class Database {
public:
    Database();
    ~Database(); // queries on the connection must be gone by then
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    // Opens or makes the file and brings its tables up to date. On failure `o_error` is a sentence for the operator.
    [[nodiscard]] bool Open(const QString& i_fileName, QString& o_error);

    QSqlDatabase Connection() const;

private:
    bool Execute(const QString& i_statement, QString& o_error);
    bool CreateTables(QString& o_error);

    QString m_connectionName;
};
