// This client's node in the tree of clients through which searches travel: one connection to a parent, from which they
// come, and any number of connections to children, to which they are passed on.
//
// The server names possible parents. All of them are tried; each that connects is a candidate, and the first candidate
// to deliver a search becomes the parent. Until then, and when the server sends a search itself, searches come by the
// server. Children connect to us by themselves; whether the server names us to others is told it by
// DetermineCanParent.
//
// The tree lives in the store, none of it saved: dnet_parent_candidate and dnet_child hold sockets by their address,
// dnet_global holds the parent, our level (the distance from the root), group leader and depth.
//
// One .cpp file a concern:
//   dnet_manager      Types, start and end, sockets and their frames
//   possible_parents  reaching those whom the server names
//   parent            candidates, adoption, what comes from above
//   children          what goes to and comes from below, whether we can be a parent
//
// Main thread only.
#pragma once

#include <QAbstractSocket>
#include <QObject>
#include <QTimer>

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "net/frame_reader.h"
#include "net/server.h"
#include "store/data.h"

class QTcpSocket;

class DNetManager : public QObject, public DataHandler {
    Q_OBJECT

public:
    // Sets the global, creates the Types, and ties itself to gp_server and peerMessenger, which exist by now, as do the
    // Types of settings.
    DNetManager();
    ~DNetManager() override;

    // To every child. i_body holds code and fields; the frame is added here. A child that does not read what it was
    // sent before is let go of.
    void SendMessageToChildren(std::string_view i_body);
    // Tells the server when the answer is another than last time.
    void DetermineCanParent();
    void DetermineChildDepth();

Q_SIGNALS:
    // A search has come. Emitted before it is passed on.
    void DNetSearchRequest(const std::string& i_user, quint32 i_req, const std::string& i_searchText);

public Q_SLOTS:
    void OnConnected();
    void OnDNetParentMinSpeed(int i_speed);
    void OnDNetParentSpeedConnectionRatio(int i_ratio);
    void OnDNetPossibleParents(const Server::PossibleParents& i_parentList);
    void OnDNetMessage(MemStream& i_message);
    void OnDNetDeliveryReport(int i_req);
    void OnDNetReset();
    // The socket is this object's from now on.
    void OnDNetConnectionAccepted(const std::string& i_user, QTcpSocket* ip_socket);
    void OnDNetConnectionRequested(const std::string& i_user, QTcpSocket* ip_socket);

    void OnSocketReadyToRead();
    void OnSocketError(QAbstractSocket::SocketError i_error);
    void OnSocketClosed();
    void OnChildSocketReadyToRead();
    void OnChildSocketError(QAbstractSocket::SocketError i_error);
    void OnChildSocketClosed();

private:
    enum class Sender { Server, Candidate, Parent, Nobody };
    // A handler of frames of one kind of socket: false ends the connection.
    using FrameHandler = bool (DNetManager::*)(QTcpSocket*, MemStream&);
    using LossHandler = void (DNetManager::*)(QTcpSocket*);

    // dnet_manager
    void Keep(QTcpSocket* ip_socket);
    void LetGo(QTcpSocket* ip_socket);
    void ReadFrom(QTcpSocket* ip_socket, FrameHandler i_handle, LossHandler i_lose);

    // possible_parents
    void TryWaitingParents();
    void TryParent(const std::string& i_user, const TCPAddress& i_address);

    // parent
    bool HandleMessage(QTcpSocket* ip_socket, MemStream& io_message);
    bool HandleSearch(QTcpSocket* ip_socket, Sender i_sender, MemStream& io_fields, std::string_view i_body);
    bool HandleLevel(QTcpSocket* ip_socket, Sender i_sender, MemStream& io_fields);
    bool HandleGroupLeader(QTcpSocket* ip_socket, Sender i_sender, MemStream& io_fields, std::string_view i_body);
    Sender WhoIs(QTcpSocket* ip_socket) const;
    void Adopt(ItemPtr i_candidate);
    void LoseParentOrCandidate(QTcpSocket* ip_socket);

    // children
    bool HandleChildMessage(QTcpSocket* ip_socket, MemStream& io_message);
    void LoseChild(QTcpSocket* ip_socket);
    void WriteToChild(QTcpSocket* ip_child, const MemStream& i_frame);
    void OnReceivedOwnUploadSpeed(Item* ip_setting);

    std::map<QTcpSocket*, std::shared_ptr<FrameReader>> m_readers; // of the sockets that are ours

    // Named by the server and not yet tried, in its order. Never more than one list holds.
    std::deque<std::pair<std::string, TCPAddress>> m_waitingParents;
    QTimer m_parentTimer;

    int m_parentMinSpeed = -1;   // kilobytes a second; -1 until the server tells
    int m_parentSpeedRatio = -1; // likewise; see ChildCapacity
    bool m_canParent = false;    // as the server was last told
};

extern DNetManager* dnetManager;
