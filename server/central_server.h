// The server as a whole: listens, keeps the sessions, and hands each message to the room that knows its meaning.
#pragma once

#include "server/accounts.h"
#include "server/database.h"
#include "server/directory.h"
#include "server/limits.h"
#include "server/login.h"
#include "server/mailbox.h"
#include "server/options.h"
#include "server/relay.h"
#include "server/rooms.h"
#include "server/search_tree.h"
#include "server/traffic.h"

#include <QObject>
#include <QTcpServer>

#include <list>
#include <set>
#include <string>

class Session;

class CentralServer : public QObject {
    Q_OBJECT

public:
    // The database is open and outlives the server.
    CentralServer(Database& i_database, const Options& i_options, const Limits& i_limits);
    ~CentralServer() override;

    // False when the port cannot be had; `o_error` is a sentence for the operator.
    [[nodiscard]] bool Listen(QString& o_error);
    QHostAddress ListenAddress() const { return m_listener.serverAddress(); }
    quint16 ListenPort() const { return m_listener.serverPort(); }

private:
    void OnNewConnection();
    void OnEnded(Session* ip_session);
    bool HasTooManyOf(std::uint32_t i_address) const;
    void MakeRoomForStranger();
    void Admit(Session& io_session, const std::string& i_user);
    void Depart(Session& io_session);

    // False: the message was malformed.
    bool OnFrame(Session& io_session, MemStream& io_body);
    bool OnMessage(Session& io_session, std::int32_t i_code, MemStream& io_body);

    const Options m_options;
    Limits m_limits;
    Traffic m_traffic;
    Accounts m_accounts;
    Mailbox m_mailbox;
    Directory m_directory;
    Rooms m_rooms;
    Relay m_relay;
    SearchTree m_searchTree;
    QTcpServer m_listener;
    std::set<Session*> m_sessions;   // owned as children
    std::list<Session*> m_strangers; // of them, those not yet admitted, the oldest first
    Login m_login;                   // its workers end before the sessions do
};
