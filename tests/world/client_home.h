// A temporary home folder with the store file of a client that is not running.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A TCP port of this machine that is free now, outside the range from which the system serves outgoing connections, so
// that it stays free until it is listened on.
quint16 FreePort();

struct ProgramRun {
    int exitStatus = -1; // -1: it crashed or did not end
    QByteArray output;
    QByteArray errors;
};
ProgramRun RunStoreTool(const QStringList& i_arguments);

class ClientHome {
public:
    // The settings of a user who logs in at this server of this machine.
    ClientHome(const QString& i_user, quint16 i_serverPort);

    const QString& User() const { return m_user; }
    quint16 Port() const { return m_port; } // on which the client listens
    QString Path(const QString& i_name = {}) const { return m_folder.filePath(i_name); }
    QString StoreFile() const { return Path(QStringLiteral(".Tidewell")); }
    QString Downloads(const char* ip_tree) const; // "complete" or "downloading"

    // tidewell-store on the file: verb and arguments behind the file.
    void Edit(const QString& i_verb, const QStringList& i_arguments) const;
    void Set(const char* ip_key, const QString& i_value) const;
    QString Setting(const char* ip_key) const;
    // Every line of the store's text.
    QStringList Dump() const;

private:
    QTemporaryDir m_folder;
    QString m_user;
    quint16 m_port;
};
