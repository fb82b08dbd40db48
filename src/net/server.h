// The session with the central server: connecting, logging in, staying connected, and every message of its protocol.
// What the server tells about users and rooms goes into the store; what is transient leaves as a signal. Everything
// runs on the main thread, and listeners are called directly, inside the message that caused them: they may send,
// disconnect or connect there.
//
// session.cpp follows the connection, senders.cpp holds what is said, handlers.cpp what is heard.
#pragma once

#include <QAbstractSocket>
#include <QHostAddress>
#include <QObject>

#include <string>
#include <utility>
#include <vector>

#include "net/frame_reader.h"
#include "net/server_messages.h"
#include "store/data_saver.h"

class PortMapper;
class QTcpSocket;

class Server : public QObject, public DataLoadedEventHandler {
    Q_OBJECT

public:
    using PossibleParents = std::vector<std::pair<std::string, TCPAddress>>;

    // timerManager and dataSaver must stand. Sets gp_server.
    Server();
    ~Server() override;

    // The Types of users and rooms; once, before the store is loaded.
    void CreateData();
    void DataLoaded() override;

    // Not owned; null, as at first, for none.
    void SetPortMapper(PortMapper* ip_mapper) { mp_portMapper = ip_mapper; }

    // Where the next attempt goes: the settings server_host and server_port, or what stands for them while they are
    // not set. The port may be any number.
    [[nodiscard]] std::string Host() const;
    [[nodiscard]] long long Port() const;
    // The other end of the connection; null while there is none.
    [[nodiscard]] QHostAddress PeerAddress() const;

    // Starts an attempt, unless one is under way or stands, or no user name is set.
    void Connect();
    // The user's own wish, so that no reconnection follows. Only when logged in.
    void Disconnect();
    [[nodiscard]] bool IsConnected() const { return m_state == State::LoggedIn; }

    // Frames the body and writes it at once. Dropped without a word unless logged in; with i_duringLogin also sent
    // while the login is under way. A server that does not read what it is sent loses the connection.
    void SendMessage(const MemStream& i_message, bool i_duringLogin);

    void SetWaitPort(int i_port);
    // Nothing more is sent for a user while a request is outstanding, over a loss of the connection too.
    void GetUserAddress(const std::string& i_user);
    void AddUser(const std::string& i_user);
    // Follows the user's status from now on, after every login anew.
    void TrackUser(const std::string& i_user);
    void UntrackUser(const std::string& i_user);
    void GetUserStatus(const std::string& i_user);
    void SendRoomChat(const std::string& i_room, const std::string& i_text);
    void EnterRoom(const std::string& i_room);
    void LeaveRoom(const std::string& i_room);
    // Asks the user to connect to this client; returns the token that their connection will name.
    unsigned int SendIndirectConnectionRequest(const std::string& i_user, const std::string& i_connectionType);
    void SendPrivateChat(const std::string& i_user, const std::string& i_text);
    // Creates the search_request item, also when offline, and returns its token.
    unsigned int FileSearch(const std::string& i_text, bool i_wishList);
    void SendFilesFolders(int i_folderCount, int i_fileCount);
    void GetUserStats(const std::string& i_user);
    void GetRoomList();
    void SendDNetHasParent(bool i_hasParent);
    void SendDNetCanParent(bool i_canParent);
    void SendUploadSpeed(int i_speed);
    void SendDNetLevel(int i_level);
    void SendDNetGroupLeader(const std::string& i_user);
    void SendChildDepth(bool i_depth);
    // i_token is that of the user's peer connection request.
    void SendCantConnectToPeer(unsigned int i_token, const std::string& i_user);

Q_SIGNALS:
    void Connecting();
    // "socket error", or the server's reason for refusing the login.
    void ConnectionFailed(std::string i_reason);
    void Connected();
    void Disconnected();

    void SearchRequested(unsigned int i_token, std::string i_text, bool i_wishList);
    void AddUserResponse(std::string i_user, bool i_added);
    void RoomChat(std::string i_room, std::string i_user, std::string i_chat);
    void PrivateChat(std::string i_user, std::string i_chat, int i_time, bool i_spontaneous);
    void ReceivedUserStats(std::string i_user, UserStats i_stats);
    void DNetParentMinSpeed(int i_speed);
    void DNetParentSpeedConnectionRatio(int i_ratio);
    // Read position behind the code; valid during the call only.
    void DNetMessage(MemStream& i_message);
    void DNetPossibleParents(const Server::PossibleParents& i_parentList);
    void DNetDeliveryReport(int i_req);
    void DNetReset();
    void WishListWait(unsigned int i_waitPeriod);
    void IndirectPeerConnectionFailure(unsigned int i_req);

public Q_SLOTS:
    void OnConnected();
    void OnSocketError(QAbstractSocket::SocketError i_error);
    void OnSocketReadyToRead();
    void OnSocketClosed();
    void AttemptReconnect();
    void RenewPortMapping();

private:
    enum class State { Disconnected, Connecting, LoggedIn };

    void OpenSocket();
    void LetGoOfSocket();
    void LoseLater();
    void OnDisconnected();
    void OnConnectedToServer();
    void AddPortMapping();

    template <class Message>
    void Send(const Message& i_message, bool i_duringLogin = false) {
        SendMessage(Encode(i_message), i_duringLogin);
    }

    void HandleMessage(int i_code, MemStream& io_stream);
    void HandleLoginReply(const from_server::LoginReply& i_reply);
    void HandleUserAddress(const from_server::UserAddress& i_message);
    void HandleAddUserReply(const from_server::AddUserReply& i_reply);
    void HandleUserStatus(const from_server::UserStatus& i_message);
    void HandleRoomChat(const from_server::RoomChat& i_message);
    void HandleRoomJoined(const from_server::RoomJoined& i_message);
    void HandleRoomLeft(const from_server::RoomLeft& i_message);
    void HandleUserJoinedRoom(const from_server::UserJoinedRoom& i_message);
    void HandleUserLeftRoom(const from_server::UserLeftRoom& i_message);
    void HandlePeerConnectionRequest(const from_server::PeerConnectionRequest& i_message);
    void HandlePrivateChat(const from_server::PrivateChat& i_message);
    void HandleUserStats(const from_server::ReceivedUserStats& i_message);
    void HandleRoomList(const from_server::RoomList& i_message);
    void HandlePrivilegedUsers(const from_server::PrivilegedUsers& i_message);
    void HandleDNetParentMinSpeed(const from_server::DNetParentMinSpeed& i_message);
    void HandleDNetParentSpeedConnectionRatio(const from_server::DNetParentSpeedConnectionRatio& i_message);
    void HandleDNetPossibleParents(const from_server::DNetPossibleParents& i_message);
    void HandleWishListWait(const from_server::WishListWait& i_message);
    void HandleDNetDeliveryReport(const from_server::DNetDeliveryReport& i_message);
    void HandleDNetReset(const from_server::DNetReset& i_message);
    void HandleIndirectConnectionFailure(const from_server::IndirectConnectionFailure& i_message);

    State m_state = State::Disconnected;
    // Each connection has a socket of its own, so that no late signal of an earlier one can be taken for its own.
    // Owned; null between connections.
    QTcpSocket* mp_socket = nullptr;
    // Counts sockets opened and let go of: whoever calls listeners tells by it whether the connection is still the one.
    unsigned int m_connection = 0;
    FrameReader m_frames;
    unsigned int m_nextSearchToken = 1;
    unsigned int m_nextIndirectToken = 1;
    bool m_firstLogin = true; // of the process, not of the connection
    bool m_reconnectWanted = false;
    PortMapper* mp_portMapper = nullptr;
};

extern Server* gp_server;
