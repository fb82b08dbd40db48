// The life of the connection: from Connect() through the login to its loss and the next attempt.
#include "net/server.h"

#include <QTcpSocket>

#include "app/log.h"
#include "app/md5/md5.h"
#include "app/settings.h"
#include "app/text.h"
#include "app/timers.h"
#include "net/port_mapper.h"
#include "net/server_schema.h"
#include "store/data.h"

Server* gp_server = nullptr;

namespace {

constexpr const char* defaultHost = "localhost";
constexpr long long defaultPort = 2242;
constexpr const char* defaultUserName = "TidewellQT";
constexpr const char* defaultPassword = "TidewellQTLanterns";

void LogServer(const QString& i_text) {
    Log(QStringLiteral("server"), 1, i_text, ItemPtr());
}

to_server::Login MakeLogin(const std::string& i_userName, const std::string& i_password) {
    MD5 l_digest;
    l_digest.update(i_userName + i_password);
    l_digest.finalize();

    to_server::Login l_login;
    l_login.userName = i_userName;
    l_login.password = i_password;
    l_login.digest = l_digest.hex_digest();
    return l_login;
}

} // namespace

Server::Server() : m_frames(limits::serverFrame) {
    gp_server = this;
    dataSaver->AddDataLoadedHandler(this);
    connect(timerManager->HalfMinuteTimer(), &QTimer::timeout, this, &Server::AttemptReconnect);
    connect(timerManager->HourTimer(), &QTimer::timeout, this, &Server::RenewPortMapping);
}

Server::~Server() {
    LetGoOfSocket();
    gp_server = nullptr;
}

void Server::CreateData() {
    CreateServerTypes();
}

void Server::DataLoaded() {
    SetDefaultSetting("use_upnp", "yes");
}

std::string Server::Host() const {
    return HasSetting("server_host") ? SettingText("server_host") : defaultHost;
}

long long Server::Port() const {
    return SettingNumber("server_port").value_or(defaultPort);
}

QHostAddress Server::PeerAddress() const {
    return mp_socket ? mp_socket->peerAddress() : QHostAddress();
}

void Server::Connect() {
    if (m_state != State::Disconnected || !HasSetting("username"))
        return;
    m_state = State::Connecting;
    Q_EMIT Connecting();
    OpenSocket();
    if (mp_portMapper && IsSettingYes("use_upnp"))
        mp_portMapper->Init();
}

void Server::OpenSocket() {
    LetGoOfSocket();
    m_frames.Renew();

    const std::string l_host = Host();
    const long long l_port = Port();
    if (!limits::IsConnectablePort(l_port)) {
        LogServer(QStringLiteral("The server's port %1 is not between 1 and 65535").arg(l_port));
        OnSocketClosed();
        return;
    }

    mp_socket = new QTcpSocket(this);
    connect(mp_socket, &QTcpSocket::connected, this, &Server::OnConnected);
    connect(mp_socket, &QTcpSocket::readyRead, this, &Server::OnSocketReadyToRead);
    connect(mp_socket, &QTcpSocket::errorOccurred, this, &Server::OnSocketError);
    connect(mp_socket, &QTcpSocket::disconnected, this, &Server::OnSocketClosed);
    mp_socket->connectToHost(ToQString(l_host), static_cast<quint16>(l_port), QIODevice::ReadWrite);
}

void Server::LetGoOfSocket() {
    ++m_connection;
    if (!mp_socket)
        return;
    QTcpSocket* const lp_socket = std::exchange(mp_socket, nullptr);
    lp_socket->disconnect(this);
    // What was said last, a chat line before the disconnection for instance, still goes out as far as it can.
    lp_socket->flush();
    lp_socket->abort();
    lp_socket->deleteLater();
}

void Server::OnConnected() {
    if (m_state != State::Connecting)
        return;
    if (!HasSetting("username") || !HasSetting("password")) {
        SetSetting("username", defaultUserName);
        SetSetting("password", defaultPassword);
    }
    Send(MakeLogin(SettingText("username"), SettingText("password")), true);
    m_reconnectWanted = false;
}

void Server::HandleLoginReply(const from_server::LoginReply& i_reply) {
    if (m_state != State::Connecting)
        return;
    if (!i_reply.accepted) {
        // No retry: the same name and password would be refused again.
        LetGoOfSocket();
        m_state = State::Disconnected;
        Q_EMIT ConnectionFailed(i_reply.reason);
        return;
    }
    m_state = State::LoggedIn;
    const unsigned int l_connection = m_connection;
    Q_EMIT Connected();
    if (l_connection == m_connection)
        OnConnectedToServer();
}

void Server::OnConnectedToServer() {
    if (m_firstLogin) {
        m_firstLogin = false;
        // Later logins leave the rooms to the forms that show them.
        for (Item* lp_room : g("room_autojoin").GetItems("room"))
            EnterRoom(lp_room->AsString());
        AddPortMapping();
    }
    for (Item* lp_user : g("is_tracked").GetItems("user"))
        AddUser(lp_user->AsString());
    // Asked before the connection fell, and still without an answer.
    for (Item* lp_user : g("user_address_request").GetItems("user"))
        Send(to_server::GetUserAddress{lp_user->AsString()});
}

void Server::AddPortMapping() {
    const long long l_port = SettingNumber("listening_port").value_or(0);
    if (mp_portMapper && IsSettingYes("use_upnp") && limits::IsConnectablePort(l_port))
        mp_portMapper->AddPortMapping(mp_socket, static_cast<int>(l_port));
}

void Server::RenewPortMapping() {
    if (!IsConnected() || !IsSettingYes("use_upnp"))
        return;
    LogServer(QStringLiteral("Renewing UPnP port mapping."));
    AddPortMapping();
}

void Server::SendMessage(const MemStream& i_message, bool i_duringLogin) {
    const bool l_maySend = i_duringLogin ? m_state != State::Disconnected : m_state == State::LoggedIn;
    if (!l_maySend || !mp_socket)
        return;
    if (mp_socket->bytesToWrite() > static_cast<qint64>(limits::queuedToSocket)) {
        LoseLater();
        return;
    }
    const MemStream l_frame = MakeFrame(i_message);
    mp_socket->write(l_frame.GetReadBuffer(), l_frame.GetPendingReadLength());
}

void Server::LoseLater() {
    // Not at once: whoever sends does not expect the session to end under it.
    const auto l_lose = [this, l_connection = m_connection] {
        if (l_connection != m_connection)
            return;
        LogServer(QStringLiteral("The server has stopped reading, closing the connection"));
        OnSocketClosed();
    };
    QMetaObject::invokeMethod(this, l_lose, Qt::QueuedConnection);
}

void Server::OnSocketReadyToRead() {
    const unsigned int l_connection = m_connection;
    while (l_connection == m_connection && m_frames.TakeFrom(*mp_socket) == FrameReader::Status::FrameReady) {
        // A handle of our own: a listener that connects anew makes the reader begin anew.
        MemStream l_frame = m_frames.Frame();
        std::int32_t l_code = 0;
        if (l_frame.Read(l_code))
            HandleMessage(l_code, l_frame);
        if (l_connection == m_connection)
            m_frames.Reset();
    }
    if (l_connection == m_connection && m_frames.GetStatus() == FrameReader::Status::BadLength) {
        LogServer(QStringLiteral("A message of %1 bytes from the server is beyond the limit, closing the connection")
                      .arg(m_frames.Length()));
        OnSocketClosed();
    }
}

void Server::OnSocketError(QAbstractSocket::SocketError) {
    OnSocketClosed();
}

void Server::OnSocketClosed() {
    if (m_state == State::Disconnected)
        return;
    // First of all, so that the other signal of the same failure and a listener's Connect() find a clean slate.
    LetGoOfSocket();
    if (m_state == State::Connecting)
        Q_EMIT ConnectionFailed("socket error");
    OnDisconnected();
    m_reconnectWanted = true;
}

void Server::OnDisconnected() {
    m_state = State::Disconnected;
    Q_EMIT Disconnected();
    // From the flag's side, which knows the users who have it.
    g("is_online").GetItems("user").Disconnect("is_online");
}

void Server::Disconnect() {
    if (m_state != State::LoggedIn)
        return;
    LetGoOfSocket();
    m_reconnectWanted = false;
    OnDisconnected();
}

void Server::AttemptReconnect() {
    if (m_reconnectWanted)
        Connect();
}
