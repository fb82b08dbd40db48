// Real client processes on Qt's offscreen platform, each in a home of its own.
#pragma once

#include "world/client_home.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>

#include <string>

// The program itself.
class ClientProcess {
public:
    explicit ClientProcess(const ClientHome& i_home);
    virtual ~ClientProcess(); // kills it if it still runs

    void Start(); // the constructor has called it once
    // Returns the exit status, -1 when the process did not end by itself.
    int Stop(int i_signal);
    void Kill(); // no last word, as at a power cut
    bool IsRunning() const { return m_process.state() == QProcess::Running; }
    const ClientHome& Home() const { return m_home; }

protected:
    ClientProcess(const ClientHome& i_home, const QString& i_program);

    QProcess m_process;

private:
    const ClientHome& m_home;
    const QString m_program;
    bool m_isEndWanted = false;
};

// The program's window and everything below it, driven by the test. Commands: see tests/world/world_client.cpp.
class DrivenClient : public ClientProcess {
public:
    explicit DrivenClient(const ClientHome& i_home);

    // The answer to the command; null after a failure, which is reported.
    QJsonValue Do(const QStringList& i_command);

    // Fires the timer that saves the store, again and again, without waiting for the answers: the last command of a
    // run.
    void SaveOnAndOn();

    // Items of the Type as objects {"value": text, "to": {Type: [values]}}.
    QJsonArray Items(const char* ip_type);
    QJsonObject ItemOf(const char* ip_type, const QString& i_value); // empty if there is none
    // Whether such an event has been there: its words in order.
    int CountEvents(const QStringList& i_words);

    void AwaitConnected();
    void AwaitEvent(const QStringList& i_words);
    // Waits until the user stands in the store as online.
    void AwaitOnline(const QString& i_user);
    // The only entry's status in the end; ip_type is "download_entry" or "upload_entry".
    void AwaitStatus(const char* ip_type, const QString& i_status);
};

// The first value to which the item is connected in the Type; empty if there is none.
QString Neighbour(const QJsonObject& i_item, const char* ip_type);
// Whether the item is connected to any of the Type.
bool HasNeighbour(const QJsonObject& i_item, const char* ip_type);
