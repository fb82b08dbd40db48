// What strangers may cost: sockets, descriptors, and bytes that wait in a socket.
#include "peer/peer_messenger_private.h"

#include <QHostAddress>
#include <QPointer>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include <sys/resource.h>

#include "peer/peer_messages.h"

namespace {

// Bytes that Qt reads ahead of us.
constexpr qint64 readAhead = 16 * limits::kibibyte;
// While there is no room for a socket: how often we look again. Sockets that were handed over end without a word.
constexpr std::chrono::milliseconds acceptRetryInterval{200};

// Between the listener's accept and ours; any number above 0 would do.
constexpr int pendingConnections = 30;

// Lives as a child of a socket and is counted for as long as the socket exists, in whatever thread that ends, and also
// when the socket's new owner disconnects all its signals.
class SocketCounter : public QObject {
public:
    SocketCounter(QTcpSocket* ip_socket, std::shared_ptr<std::atomic<int>> i_count)
        : QObject(ip_socket), m_count(std::move(i_count)) {
        ++*m_count;
    }
    ~SocketCounter() override { --*m_count; }

private:
    std::shared_ptr<std::atomic<int>> m_count;
};

int CountOpenDescriptors() {
    std::error_code l_error;
    const std::filesystem::directory_iterator l_descriptors("/proc/self/fd", l_error);
    // Less the one that reads the folder.
    return l_error ? 0 : static_cast<int>(std::distance(begin(l_descriptors), end(l_descriptors))) - 1;
}

} // namespace

// An outgoing socket, not yet connecting.
QTcpSocket* PeerMessenger::NewSocket() {
    auto* lp_socket = new QTcpSocket;
    Adopt(lp_socket);
    return lp_socket;
}

void PeerMessenger::Adopt(QTcpSocket* ip_socket) {
    ip_socket->setParent(this);
    ip_socket->setReadBufferSize(readAhead);
    new SocketCounter(ip_socket, mp_private->socketCount);
}

// Out of the books that are kept beside the store.
void PeerMessenger::Release(QTcpSocket* ip_socket) {
    m_socketBuffers.erase(ip_socket);
    mp_private->uninitialized.Release(ip_socket);
    mp_private->awaitingToken.Release(ip_socket);
}

void PeerMessenger::UpdateSocketLimit() {
    rlimit l_descriptors{};
    if (getrlimit(RLIMIT_NOFILE, &l_descriptors) != 0)
        return;
    const auto l_all = static_cast<long>(std::min<rlim_t>(l_descriptors.rlim_cur, 1'000'000));
    const long l_others = std::max(0, CountOpenDescriptors() - mp_private->socketCount->load());
    mp_private->socketLimit = static_cast<int>(
        std::max(0L, std::min({long{limits::sockets}, l_all * limits::socketsPercentOfDescriptors / 100,
                               l_all - l_others - limits::descriptorsKeptForFiles})));
}

bool PeerMessenger::HasRoomForSocket() const {
    return *mp_private->socketCount < mp_private->socketLimit;
}

void PeerMessenger::PauseAccepting() {
    m_listener.pauseAccepting();
    // Pausing alone does not stop the loop that calls us; that it may hold no connection does.
    m_listener.setMaxPendingConnections(0);
    mp_private->acceptRetry.start(acceptRetryInterval);
    if (!mp_private->hasToldOfPause)
        LogPeer(1, QStringLiteral("No room for more connections, accepting none for now"));
    mp_private->hasToldOfPause = true;
}

void PeerMessenger::ResumeAcceptingIfThereIsRoom() {
    if (!HasRoomForSocket())
        return;
    mp_private->acceptRetry.stop();
    m_listener.setMaxPendingConnections(pendingConnections);
    m_listener.resumeAccepting();
}

void PeerMessenger::AdmitStranger(Strangers& io_strangers, QTcpSocket* ip_socket) {
    const quint32 l_address = ip_socket->peerAddress().toIPv4Address();
    const auto l_leaves = io_strangers.Admit(ip_socket, l_address, std::chrono::steady_clock::now());
    if (!l_leaves)
        return;
    LogPeer(1, QStringLiteral("Too many connections that have not said what they are for, closing the oldest"));
    DisposeOfSocket(static_cast<QTcpSocket*>(const_cast<void*>(*l_leaves)));
}

void PeerMessenger::CloseOverdueStrangers(std::chrono::steady_clock::time_point i_now) {
    for (Strangers* lp_strangers : {&mp_private->uninitialized, &mp_private->awaitingToken}) {
        for (const Strangers::Id l_id : lp_strangers->Overdue(i_now)) {
            LogPeer(1, QStringLiteral("Connection that has not said what it is for expired, closing."));
            DisposeOfSocket(static_cast<QTcpSocket*>(const_cast<void*>(l_id)));
        }
    }
}

// Lists are large by nature: one at a time may wait in a socket, beside all else that is queued there.
bool PeerMessenger::IsListGoingOut(QTcpSocket* ip_socket) {
    const SocketBufferInfo& l_info = BufferOf(ip_socket);
    return l_info.sentEnd - ip_socket->bytesToWrite() < l_info.listEnd;
}

// Notes what goes out. A peer that leaves too much unread loses its connection, since what it does not read would be
// missing later.
bool PeerMessenger::HasRoomFor(QTcpSocket* ip_socket, const MemStream& i_message) {
    SocketBufferInfo& l_info = BufferOf(ip_socket);
    const qint64 l_size = i_message.GetWriteIndex() + qint64{sizeof(std::int32_t)};
    const int l_code = PeekMessageCode(i_message).value_or(0);
    const bool l_isList = l_code == PM_SHARED_FILE_LIST || l_code == PM_SHARED_FILES_IN_FOLDER;
    const bool l_listGoesOut = IsListGoingOut(ip_socket);
    if (l_isList && l_listGoesOut) {
        LogPeer(1, QStringLiteral("A list is still going out on this connection, not sending another"));
        return false;
    }
    const qint64 l_waiting = ip_socket->bytesToWrite();
    const qint64 l_gone = l_info.sentEnd - l_waiting;
    const qint64 l_ofList = l_listGoesOut ? l_info.listEnd - std::max(l_gone, l_info.listBegin) : 0;
    if (!l_isList && l_waiting - l_ofList + l_size > static_cast<qint64>(limits::queuedToSocket)) {
        LogPeer(1, QStringLiteral("Too much is waiting on a connection that is not read, closing."));
        DisposeLater(ip_socket);
        return false;
    }
    if (l_isList) {
        l_info.listBegin = l_info.sentEnd;
        l_info.listEnd = l_info.sentEnd + l_size;
    }
    return true;
}

// For callers that are in the midst of using the socket.
void PeerMessenger::DisposeLater(QTcpSocket* ip_socket) {
    const QPointer<QTcpSocket> l_socket(ip_socket);
    QMetaObject::invokeMethod(
        this,
        [this, l_socket] {
            if (l_socket && m_socketBuffers.contains(l_socket))
                DisposeOfSocket(l_socket);
        },
        Qt::QueuedConnection);
}
