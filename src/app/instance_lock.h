// One running program per home folder: two would overwrite each other's store file. The first holds a lock beside that
// file, which ends with the process however it ends; a later one asks the first to show itself.
#pragma once

#include <QLocalServer>
#include <QObject>

#include <string>

class InstanceLock : public QObject {
    Q_OBJECT

public:
    // i_folder: the home folder. Where no lock can be made at all (a folder that cannot be written to) the program
    // runs without one.
    explicit InstanceLock(const std::string& i_folder);
    ~InstanceLock() override;

    // Another process has it.
    [[nodiscard]] bool IsTaken() const { return m_isTaken; }
    // Tells that process that someone wants to see it; false if it cannot be reached.
    [[nodiscard]] bool CallHolder() const;

Q_SIGNALS:
    // Someone has started the program once more.
    void Called();

private:
    void Lock();
    void Listen();
    void OnCall();

    std::string m_lockPath;
    QString m_socketPath;
    int m_descriptor = -1;
    bool m_isTaken = false;
    QLocalServer m_server;
};
