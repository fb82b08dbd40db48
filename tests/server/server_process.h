// A real tidewell-server as a child process on a port of the system's choice.
#pragma once

#include "server/frame_link.h"

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

class ServerProcess {
public:
    explicit ServerProcess(const QStringList& i_options = {});
    ~ServerProcess(); // kills it if it still runs

    // Also starts it again, on the same data file. The constructor has called it once.
    void Start(const QStringList& i_options = {});
    // Returns the exit status, -1 when the process did not end by itself.
    int Stop(int i_signal);
    void Kill(); // no last word, as at a power cut

    bool IsRunning() const { return m_process.state() == QProcess::Running; }
    quint16 Port() const { return m_port; }
    qint64 ProcessId() const { return m_process.processId(); }
    QString DataFile() const { return m_folder.filePath(QStringLiteral("server.sqlite")); }

private:
    QString ErrorFile() const; // a pipe that nobody empties could stop the server
    QByteArray Errors() const;

    QTemporaryDir m_folder;
    QProcess m_process;
    quint16 m_port = 0;
};

// What a run that ends by itself came to.
struct ProgramResult {
    int exitStatus = -1;
    QByteArray output;
    QByteArray errors;
};
ProgramResult RunServer(const QStringList& i_options);
