#include "server/session.h"

#include <QHostAddress>
#include <QTcpSocket>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace {

// A client whose machine has vanished without a word is noticed within about three minutes.
void WatchForVanishedPeer(QTcpSocket& io_socket) {
    io_socket.setSocketOption(QAbstractSocket::KeepAliveOption, 1);
    io_socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    const auto l_descriptor = static_cast<int>(io_socket.socketDescriptor());
    const int l_idleSeconds = 90;
    const int l_probeSeconds = 20;
    const int l_probes = 4;
    ::setsockopt(l_descriptor, IPPROTO_TCP, TCP_KEEPIDLE, &l_idleSeconds, sizeof(l_idleSeconds));
    ::setsockopt(l_descriptor, IPPROTO_TCP, TCP_KEEPINTVL, &l_probeSeconds, sizeof(l_probeSeconds));
    ::setsockopt(l_descriptor, IPPROTO_TCP, TCP_KEEPCNT, &l_probes, sizeof(l_probes));
}

} // namespace

Session::Session(QTcpSocket* ip_socket, const Limits& i_limits, Traffic& io_traffic, FrameHandler i_handler)
    : mp_socket(ip_socket), m_limits(i_limits), m_traffic(io_traffic), m_handler(std::move(i_handler)),
      m_reader(i_limits.loginFrame),
      m_budget(i_limits.trafficBurst, i_limits.trafficPerSecond, TrafficBudget::Clock::now()),
      m_address(ip_socket->peerAddress().toIPv4Address()) {
    mp_socket->setParent(this);
    mp_socket->setReadBufferSize(m_limits.readBuffer);
    WatchForVanishedPeer(*mp_socket);
    m_readAgain.setSingleShot(true);
    m_deadline.setSingleShot(true);
    connect(mp_socket, &QTcpSocket::readyRead, this, &Session::OnReadyRead);
    connect(mp_socket, &QTcpSocket::bytesWritten, this, &Session::OnBytesWritten);
    connect(mp_socket, &QTcpSocket::disconnected, this, &Session::OnDisconnected);
    connect(&m_readAgain, &QTimer::timeout, this, &Session::OnReadyRead);
    connect(&m_deadline, &QTimer::timeout, this, &Session::End);
    m_deadline.start(m_limits.loginTime);
    m_readAgain.start(0); // bytes that came with the connection raise no signal
}

Session::~Session() {
    mp_socket->disconnect(this);
    m_traffic.queued -= m_queued;
}

void Session::BeginLogin() {
    m_state = State::LoggingIn;
    m_deadline.stop(); // the client has done its part
}

void Session::FinishLogin(const std::string& i_name) {
    m_state = State::Online;
    m_name = i_name;
    m_reader.SetLimit(m_limits.frame);
    m_readAgain.start(0);
}

void Session::OnReadyRead() {
    if (m_state == State::Ending) {
        // Unread bytes at the close would make the system throw away the last words to the client.
        mp_socket->readAll();
    }
    for (int l_frames = 0; IsReading(); ++l_frames) {
        const auto l_wait = m_budget.Wait(TrafficBudget::Clock::now());
        if (l_wait.count() > 0 || l_frames == m_limits.framesPerTurn) {
            m_readAgain.start(l_wait);
            return;
        }
        if (!ReadFrame()) {
            return;
        }
    }
}

// False when there is no whole frame for now.
bool Session::ReadFrame() {
    const FrameReader::Status l_status = m_reader.TakeFrom(*mp_socket);
    if (l_status == FrameReader::Status::BadLength || (l_status == FrameReader::Status::FrameReady && !HandleFrame())) {
        End();
    }
    return l_status == FrameReader::Status::FrameReady;
}

bool Session::HandleFrame() {
    const std::int64_t l_sentBefore = m_traffic.sent;
    const std::int64_t l_length = m_reader.Length();
    const bool l_isGood = m_handler(*this, m_reader.Frame());
    m_reader.Reset();
    m_budget.Pay(m_traffic.sent - l_sentBefore + l_length + m_limits.trafficPerFrame);
    return l_isGood;
}

void Session::Send(const MemStream& i_message) {
    SendFrame(MakeFrame(i_message).GetWritten());
}

void Session::SendFrame(std::string_view i_frame) {
    if (m_state == State::Ending) {
        return;
    }
    const auto l_length = static_cast<std::int64_t>(i_frame.size());
    if (m_queued + l_length > AllowedQueue()) {
        End();
        return;
    }
    mp_socket->write(i_frame.data(), l_length);
    m_queued += l_length;
    m_traffic.queued += l_length;
    m_traffic.sent += l_length;
}

std::int64_t Session::AllowedQueue() const {
    return m_traffic.queued > m_limits.sendQueues ? m_limits.sendQueueWhenFull : m_limits.sendQueue;
}

void Session::OnBytesWritten(qint64 i_count) {
    m_queued -= i_count;
    m_traffic.queued -= i_count;
    if (m_state == State::Ending && m_queued == 0) {
        SayNoMore();
    }
}

void Session::EndAfterSending() {
    m_state = State::Ending;
    m_deadline.start(m_limits.closingTime);
    if (m_queued == 0) {
        SayNoMore();
    }
}

// The client sees the end of the stream and closes; the deadline closes for one that does not.
void Session::SayNoMore() {
    ::shutdown(static_cast<int>(mp_socket->socketDescriptor()), SHUT_WR);
}

void Session::End() {
    m_state = State::Ending;
    m_deadline.stop();
    QMetaObject::invokeMethod(
        this,
        [this] {
            mp_socket->abort();
            OnDisconnected();
        },
        Qt::QueuedConnection);
}

void Session::OnDisconnected() {
    if (m_hasEnded) {
        return;
    }
    // What a leaving client said last still counts; it fits into the read buffer.
    while (IsReading() && ReadFrame()) {
    }
    m_state = State::Ending;
    m_hasEnded = true;
    Q_EMIT Ended(this);
}
