// Connections between clients, and the messages on them.
//
// Senders name a user and never see a socket: a message goes out at once on an open messaging connection, or waits
// (up to five minutes) while one is made. A connection is always tried both ways: straight to the user's address, and
// by the server asking the other client to connect back. The first that opens serves; the other runs out by itself, or
// gives a second connection. Nobody is told of a failed attempt.
//
// The bookkeeping lives in the store (peer/peer_schema.h). A socket is known there by its address, in at most one of
// uninitialized_socket, peer_socket, connect_to_peer_request_socket and peer_connection_request_socket.
//
// One .cpp file a concern:
//   connections       reaching a user, and the sockets that we open
//   incoming          the listener, callers that say who they are, connections that the server asks for
//   messaging         frames in and out, the end of a socket
//   unsent_messages   the queue of what waits for a connection
//   handlers          one function a message
//   senders           one function a message
//   expiry            what the half-minute tick ends
//   caps              what strangers may cost
//
// Main thread only.
#pragma once

#include <QAbstractSocket>
#include <QObject>
#include <QTcpServer>

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "net/mem_stream.h"
#include "peer/file_records.h"
#include "store/data.h"
#include "store/data_saver.h"

class QTcpSocket;
class Strangers;
struct DirectInit;
struct IndirectAnswer;
struct SearchReply;
struct ShareList;
struct SocketBufferInfo;

// Gives the finished share list message (code and packed body, without the frame's length) for the user who asks. Asked
// inside a message's handling; answers then or later, once, or never if it goes. Without a message nothing goes out.
class SharedFilesSource {
public:
    virtual ~SharedFilesSource() = default;
    using Answer = std::function<void(const std::optional<MemStream>& i_message)>;
    virtual void GetSharedFilesMessage(const std::string& i_user, Answer i_answer) = 0;
};

// Turns an answer into items. Called only for a token that has a `search_request`, in the name of the user on whose
// connection it came. Returns the finished `search_results` item, or null if the answer brought nothing new.
class SearchReplyReceiver {
public:
    virtual ~SearchReplyReceiver() = default;
    virtual ItemPtr TakeSearchReply(ItemPtr i_request, const SearchReply& i_reply) = 0;
};

class PeerMessenger : public QObject, public DataHandler, public DataLoadedEventHandler {
    Q_OBJECT

public:
    // Sets the global, creates the Types, and ties itself to gp_server, timerManager and dataSaver, which exist by now.
    PeerMessenger();
    ~PeerMessenger() override;

    // Not owned; null takes it out again. Messages that ask for what is not there are skipped.
    void SetSharedFilesSource(SharedFilesSource* ip_source);
    void SetSearchReplyReceiver(SearchReplyReceiver* ip_receiver);

    // Settles the port settings and starts to listen.
    void DataLoaded() override;
    // Empty while nothing has gone wrong; else a sentence that names the port. Known from ListenFinished() on.
    std::string ListenError() const;
    // The port that is listened on, 0 if none.
    quint16 ListeningPort() const;

    // i_message holds code and fields; the frame is added here. A message that has to wait shares its buffer.
    void SendMessage(const std::string& i_user, const MemStream& i_message);
    // False if the socket does not take it.
    bool SendMessage(QTcpSocket* ip_socket, const MemStream& i_message);
    void SendUnsentMessages(const std::string& i_user);
    // Ends a socket that is this object's. It stays valid until the event loop comes back.
    void DisposeOfSocket(QTcpSocket* ip_socket);

    // Lead to FileConnectionAccepted and DNetConnectionAccepted, or to nothing.
    void RequestFileConnectionToUser(const std::string& i_user);
    void RequestDNetConnection(const std::string& i_user);

    void GetUserSharedFiles(const std::string& i_user);
    void QueueDownload(const std::string& i_user, const std::string& i_file);
    // Offers an upload; returns the transfer's token.
    unsigned int RequestUpload(const std::string& i_user, const std::string& i_file, long long i_size);
    void AcceptTransferRequest(const std::string& i_user, unsigned int i_token, bool i_hasSize, long long i_size);
    void DenyTransferRequest(const std::string& i_user, unsigned int i_token, const std::string& i_reason);
    void DenyUpload(const std::string& i_user, const std::string& i_file, const std::string& i_reason);

    // Closes the callers that have not said who they are, and the file sockets whose token has not come, within their
    // time. Part of the half-minute tick.
    void CloseOverdueStrangers(std::chrono::steady_clock::time_point i_now);

Q_SIGNALS:
    // Whether or not the port could be had: ask ListenError().
    void ListenFinished();

    // A socket that leaves for its new owner: no parent, no signals connected. It may hold bytes already, which raise
    // no new signal: the owner reads once on taking it. Without a listener the socket is closed. "Accepted": we asked
    // for the connection. "Requested": we were reached.
    void FileConnectionAccepted(const std::string& i_user, QTcpSocket* ip_socket);
    void FileConnectionRequested(const std::string& i_user, QTcpSocket* ip_socket, uint i_requestID);
    void DNetConnectionAccepted(const std::string& i_user, QTcpSocket* ip_socket);
    void DNetConnectionRequested(const std::string& i_user, QTcpSocket* ip_socket);

    // i_user is the user of the connection that the message came on. Listeners must not dispose of that connection.
    void SearchResults(ItemPtr i_searchResults);
    // Comes some time after the list, which is unpacked on another thread; a listener may empty it.
    void UserShare(const std::string& i_userName, FileInfoMap& i_share, AttributeTranslationTable& i_translationTable);
    void SharedFilesInFolderRequested(const std::string& i_user, quint32 i_req, const std::string& i_folder);
    void FileTransferRequested(const std::string& i_user, int i_direction, uint i_req, const std::string& i_file,
                               qint64 i_fileSize);
    void FileTransferResponse(const std::string& i_user, uint i_req, bool i_accepted, bool i_receivedFileSize,
                              qint64 i_fileSize, const std::string& i_denialReason);
    void QueueUploadRequested(const std::string& i_user, const std::string& i_file);
    void UploadFailed(const std::string& i_user, const std::string& i_file);
    void UploadDenied(const std::string& i_user, const std::string& i_file, const std::string& i_reason);
    void DownloadPlaceInLine(const std::string& i_user, const std::string& i_file, int i_place);

public Q_SLOTS:
    void OnNewConnection();
    void OnConnectedToServer();
    void OnIndirectResponseSocketConnected();
    void OnConnectToPeerSocketConnected();
    void OnConnectToPeerSocketError(QAbstractSocket::SocketError i_error);
    void OnIndirectPeerConnectionFailure(uint i_req);
    void OnSocketReadyToRead();
    void OnSocketClosed();
    void OnSocketError(QAbstractSocket::SocketError i_error);
    void EveryHalfMinute();

private:
    // The open connection that a handler works on. The name is a copy: a listener may change the store.
    struct Connection {
        QTcpSocket* socket;
        std::string user;
    };

    // connections
    void ConnectToUser(const std::string& i_user, const char* ip_type);
    void StartDirectAttempt(ItemPtr i_request, ItemPtr i_user, ItemPtr i_type);
    void ConnectLater(QTcpSocket* ip_socket, ItemPtr i_user);
    void OnUserAddress(Item* ip_user);
    void InspectPeerConnectionRequest(ItemPtr i_request);
    void DisposeOfPeerConnectionRequest(ItemPtr i_request);
    void OpenMessaging(QTcpSocket* ip_socket, ItemPtr i_user);
    template <class Signal, class... Arguments>
    void HandOver(QTcpSocket* ip_socket, Signal i_signal, const std::string& i_user, Arguments... i_arguments);

    // incoming
    void OnPeerConnectionRequest(Item* ip_request);
    void OnPeerConnectionRequestRemoved(Item* ip_request);
    void ConnectBackToThoseWaiting();
    void ConnectBack(Item* ip_request);
    void GiveUpConnectingBack(ItemPtr i_request);
    bool HandleInitFrame(QTcpSocket* ip_socket, MemStream& io_body);
    bool HandleIndirectAnswer(QTcpSocket* ip_socket, const IndirectAnswer& i_answer);
    bool HandleDirectInit(QTcpSocket* ip_socket, const DirectInit& i_init);
    void AwaitFileToken(QTcpSocket* ip_socket, const std::string& i_user);

    // messaging
    SocketBufferInfo& BufferOf(QTcpSocket* ip_socket);
    void ReadFrom(QTcpSocket* ip_socket);
    bool TakeFrame(QTcpSocket* ip_socket, SocketBufferInfo& io_info);
    void ReadFileToken(QTcpSocket* ip_socket, const SocketBufferInfo& i_info);
    ItemPtr PickPeerSocket(ItemPtr i_user);
    bool HasRoomFor(QTcpSocket* ip_socket, const MemStream& i_message);
    bool IsListGoingOut(QTcpSocket* ip_socket);
    void DisposeLater(QTcpSocket* ip_socket);
    void OnPeerSocketItemAdded(Item* ip_item);
    void OnPeerSocketItemRemoved(Item* ip_item);

    // unsent_messages
    void QueueUnsentMessage(ItemPtr i_user, const MemStream& i_message);
    void OnUnsentMessageRemoved(Item* ip_item);

    // handlers: false ends the connection
    bool HandleMessage(QTcpSocket* ip_socket, MemStream& io_message);
    bool HandleCode(const Connection& i_connection, int i_code, MemStream& io_fields);
    bool HandleShareListRequest(const Connection& i_connection);
    bool HandleShareList(const Connection& i_connection, const MemStream& i_packed);
    void OnListUnpacked(const std::string& i_user, std::size_t i_packedSize, std::optional<ShareList>& io_list);
    bool HandleSearchReply(const Connection& i_connection, const MemStream& i_packed);
    bool HandleFolderRequest(const Connection& i_connection, InputStream& io_fields);
    bool HandleTransferRequest(const Connection& i_connection, InputStream& io_fields);
    bool HandleTransferResponse(const Connection& i_connection, InputStream& io_fields);
    bool HandleQueueUpload(const Connection& i_connection, InputStream& io_fields);
    bool HandlePlaceInLine(const Connection& i_connection, InputStream& io_fields);
    bool HandleUploadFailure(const Connection& i_connection, InputStream& io_fields);
    bool HandleUploadDenial(const Connection& i_connection, InputStream& io_fields);

    // expiry
    void ExpireUnsentMessages(const QDateTime& i_now);
    void ExpireIndirectRequests(const QDateTime& i_now);
    void ExpireDirectAttempts(const QDateTime& i_now);
    void ExpireConnectingBack(const QDateTime& i_now);
    void ExpireIdleConnections(const QDateTime& i_now);
    void ForgetStrangers();

    // caps
    void AdmitStranger(Strangers& io_strangers, QTcpSocket* ip_socket);
    QTcpSocket* NewSocket();
    void Adopt(QTcpSocket* ip_socket);
    void Release(QTcpSocket* ip_socket);
    void UpdateSocketLimit();
    bool HasRoomForSocket() const;
    void PauseAccepting();
    void ResumeAcceptingIfThereIsRoom();

    struct Private; // what strangers may cost, and what waits for its turn

    QTcpServer m_listener;
    std::map<QTcpSocket*, std::shared_ptr<SocketBufferInfo>> m_socketBuffers;
    int m_sendOrder = 0;
    std::unique_ptr<Private> mp_private;
};

extern PeerMessenger* peerMessenger;
// Set first by the destructor: sockets that outlive the messenger must not touch it.
extern bool g_peerMessengerDeleted;
