// What the files of PeerMessenger share among themselves.
#pragma once

#include <QMetaMethod>
#include <QString>
#include <QTcpSocket>
#include <QTimer>

#include <atomic>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string>

#include "app/background_worker.h"
#include "app/log.h"
#include "app/text.h"
#include "net/frame_reader.h"
#include "peer/pace.h"
#include "peer/peer_messenger.h"
#include "peer/strangers.h"

// The receive state of one socket, and what went out on it.
struct SocketBufferInfo {
    FrameReader reader{limits::initFrame};
    bool isReading = false; // a handler below has gone round the event loop
    // A reached file connection: its next 4 raw bytes are the transfer's token, from this user.
    bool awaitingFileToken = false;
    std::string tokenUser;

    // Positions in the stream of bytes ever given to the socket: its end, and where the last share list or folder
    // reply begins and ends. What of it has left is sentEnd less the socket's bytesToWrite().
    qint64 sentEnd = 0;
    qint64 listBegin = 0;
    qint64 listEnd = 0;
    bool isListAwaited = false; // a share list for this connection is being made
};

struct PeerMessenger::Private {
    struct WaitingMessage {
        ItemPtr item;
        std::size_t size;
    };

    SharedFilesSource* sharedFiles = nullptr;
    SearchReplyReceiver* searchReplies = nullptr;
    std::string listenError;

    Strangers uninitialized;
    Strangers awaitingToken;
    std::set<std::string> usersMadeByCallers; // names that came into the store because a caller gave them

    // Sockets that exist, those handed over included: these may die in other threads.
    std::shared_ptr<std::atomic<int>> socketCount = std::make_shared<std::atomic<int>>(0);
    int socketLimit = limits::sockets;
    QTimer acceptRetry; // runs while accepting pauses
    bool hasToldOfPause = false;

    std::deque<Item*> connectBackQueue; // peer_connection_request, in order of arrival
    QTimer connectBackTimer;

    std::map<long long, WaitingMessage> waiting; // by send order
    std::size_t waitingBytes = 0;

    std::size_t packedListBytes = 0; // of the share lists that have arrived and are not unpacked yet
    BackgroundWorker listWorker{"list unpacking"};
};

inline void LogPeer(int i_level, const QString& i_text, ItemPtr i_user = ItemPtr()) {
    Log(QStringLiteral("Peer Messenger"), i_level, i_text, i_user);
}

// The text of the neighbour of that Type, as the log shows it; empty if there is none.
inline QString ShownValue(ItemPtr i_item, const char* ip_type) {
    return ToQString(i_item[ip_type].AsString());
}

// The text with the item's connection type as %1 and its user as %2.
inline QString TypeAndUser(const QString& i_text, ItemPtr i_item) {
    return i_text.arg(ShownValue(i_item, "peer_connection_type"), ShownValue(i_item, "user"));
}

// The item that stands for the socket in that Type; null if it is not of that kind.
inline ItemPtr SocketItem(const char* ip_type, QTcpSocket* ip_socket) {
    return d.GetType(ip_type)->HasItem(Value(ip_socket));
}

template <class Signal, class... Arguments>
void PeerMessenger::HandOver(QTcpSocket* ip_socket, Signal i_signal, const std::string& i_user,
                             Arguments... i_arguments) {
    ip_socket->disconnect();
    // The new owner may write past Qt, to the descriptor: what we wrote must be out before.
    ip_socket->flush();
    Release(ip_socket);
    if (!isSignalConnected(QMetaMethod::fromSignal(i_signal))) {
        // Nobody would ever close it.
        ip_socket->close();
        ip_socket->deleteLater();
        return;
    }
    ip_socket->setParent(nullptr);
    ip_socket->setReadBufferSize(0);
    Q_EMIT(this->*i_signal)(i_user, ip_socket, i_arguments...);
}
