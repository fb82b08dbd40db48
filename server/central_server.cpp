#include "server/central_server.h"

#include "server/session.h"

#include <QNetworkProxy>
#include <QTcpSocket>

#include <sys/resource.h>

#include <algorithm>

namespace {

constexpr int g_backlog = 512;

int DescriptorsForSessions() {
    rlimit l_limit{};
    ::getrlimit(RLIMIT_NOFILE, &l_limit);
    const auto l_descriptors = static_cast<int>(std::min<rlim_t>(l_limit.rlim_cur, 1'000'000));
    return l_descriptors * limits::socketsPercentOfDescriptors / 100 - limits::descriptorsKeptForFiles;
}

} // namespace

CentralServer::CentralServer(Database& i_database, const Options& i_options, const Limits& i_limits)
    : m_options(i_options), m_limits(i_limits), m_accounts(i_database), m_mailbox(i_database, m_limits),
      m_directory(m_accounts, m_limits, i_options.privileged), m_rooms(m_directory, m_limits),
      m_relay(m_directory, m_mailbox), m_searchTree(m_directory, m_limits, i_options.tree),
      m_login(m_accounts, m_limits, i_options.isRegistrationOpen,
              [this](Session& io_session, const std::string& i_user) { Admit(io_session, i_user); }) {
    m_limits.sessions = std::min(m_limits.sessions, DescriptorsForSessions());
    m_listener.setProxy(QNetworkProxy::NoProxy); // else the desktop's proxy settings would be asked
    m_listener.setListenBacklogSize(g_backlog);
    connect(&m_listener, &QTcpServer::newConnection, this, &CentralServer::OnNewConnection);
}

CentralServer::~CentralServer() {
    for (Session* lp_session : m_sessions) {
        delete lp_session;
    }
}

bool CentralServer::Listen(QString& o_error) {
    if (m_listener.listen(m_options.listenAddress, m_options.port)) {
        return true;
    }
    o_error = QStringLiteral("The server cannot listen on %1:%2: %3.")
                  .arg(m_options.listenAddress.toString())
                  .arg(m_options.port)
                  .arg(m_listener.errorString());
    return false;
}

// Connections that find all sessions taken wait in the listener, which stops accepting when a few of them do.
void CentralServer::OnNewConnection() {
    while (static_cast<int>(m_sessions.size()) < m_limits.sessions) {
        QTcpSocket* lp_socket = m_listener.nextPendingConnection();
        if (!lp_socket) {
            return;
        }
        if (HasTooManyOf(lp_socket->peerAddress().toIPv4Address())) {
            delete lp_socket;
            continue;
        }
        MakeRoomForStranger();
        auto* lp_session = new Session(lp_socket, m_limits, m_traffic, [this](Session& io_session, MemStream& io_body) {
            return OnFrame(io_session, io_body);
        });
        lp_session->setParent(this);
        connect(lp_session, &Session::Ended, this, &CentralServer::OnEnded);
        m_sessions.insert(lp_session);
        m_strangers.push_back(lp_session);
    }
}

bool CentralServer::HasTooManyOf(std::uint32_t i_address) const {
    return std::ranges::count(m_strangers, i_address, &Session::Address) >= m_limits.unauthenticatedPerAddress;
}

void CentralServer::MakeRoomForStranger() {
    if (static_cast<int>(m_strangers.size()) < m_limits.unauthenticated) {
        return;
    }
    const auto l_oldest = std::ranges::find(m_strangers, Session::State::Stranger, &Session::GetState);
    if (l_oldest != m_strangers.end()) {
        (*l_oldest)->End();
    }
}

void CentralServer::OnEnded(Session* ip_session) {
    Depart(*ip_session);
    m_strangers.remove(ip_session);
    m_sessions.erase(ip_session);
    ip_session->deleteLater();
    OnNewConnection();
}

void CentralServer::Admit(Session& io_session, const std::string& i_user) {
    if (Session* lp_earlier = m_directory.Find(i_user)) {
        Depart(*lp_earlier);
        lp_earlier->End();
    }
    m_strangers.remove(&io_session);
    io_session.FinishLogin(i_user);
    from_server::LoginReply l_reply;
    l_reply.accepted = true;
    l_reply.greeting = m_options.greeting;
    l_reply.address = io_session.Address();
    io_session.Send(Encode(l_reply));
    m_directory.Enter(io_session);
    m_searchTree.Enter(io_session);
    m_rooms.OnGetRoomList(io_session, {}); // whoever comes wants to see where people are
    m_relay.DeliverWaiting(io_session);
}

void CentralServer::Depart(Session& io_session) {
    m_rooms.LeaveAll(io_session);
    m_searchTree.Leave(io_session);
    m_directory.Leave(io_session);
}
