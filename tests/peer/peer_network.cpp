#include "peer_network.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QHostAddress>
#include <QTest>

#include "app/settings.h"
#include "app/text.h"
#include "app/timestamp.h"

namespace {

// Everything that lives as long as the test program.
struct Network {
    TimerManager timers;
    DataSaver saver;
    ScriptedServer scriptedServer;
    Server server;
    std::unique_ptr<PeerMessenger> messenger;

    Network() {
        server.CreateData();
        messenger = std::make_unique<PeerMessenger>();
        CreateSettingsTypes();
        SetSetting("username", "me");
        SetSetting("password", "secret");
        SetSetting("server_host", "127.0.0.1");
        SetSetting("server_port", int{scriptedServer.Port()});
        SetSetting("use_upnp", "no");
        SetSetting("listening_port", 0);
        messenger->DataLoaded();
        server.Connect();
    }
};

Network& TheNetwork() {
    static Network s_network;
    return s_network;
}

} // namespace

bool WaitFor(const std::function<bool()>& i_condition) {
    return QTest::qWaitFor(i_condition, 20'000);
}

void LetThingsSettle() {
    // Time alone is not enough where other processes take most of it: each turn is one step on a road of a few.
    QElapsedTimer l_time;
    l_time.start();
    for (int l_turn = 0; l_turn < 50 || l_time.elapsed() < 60; ++l_turn)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

FrameLog::FrameLog(QTcpSocket* ip_socket) {
    const auto Read = [this, ip_socket] {
        while (m_reader.TakeFrom(*ip_socket) == FrameReader::Status::FrameReady) {
            frames.push_back(BytesOf(m_reader.Frame()));
            m_reader.Reset();
        }
    };
    QObject::connect(ip_socket, &QTcpSocket::readyRead, ip_socket, Read);
    if (ip_socket->isOpen())
        Read();
}

ScriptedPeer::ScriptedPeer() : mp_socket(std::make_unique<QTcpSocket>()) {
    m_log = std::make_unique<FrameLog>(mp_socket.get());
    mp_socket->connectToHost(QHostAddress(QHostAddress::LocalHost), peerMessenger->ListeningPort());
    EXPECT_TRUE(mp_socket->waitForConnected(10'000));
}

ScriptedPeer::ScriptedPeer(QTcpSocket* ip_socket) : mp_socket(ip_socket) {
    mp_socket->setParent(nullptr);
    m_log = std::make_unique<FrameLog>(ip_socket);
}

std::unique_ptr<ScriptedPeer> ScriptedPeer::Introduced(const std::string& i_user, const char* ip_type) {
    auto l_peer = std::make_unique<ScriptedPeer>();
    const auto l_count = [&] { return d.GetType("user")->HasItem(i_user).GetItems("peer_socket").size(); };
    const std::size_t l_before = l_count();
    l_peer->SendFrame(BytesOf(EncodeInitFrame(DirectInit{i_user, ip_type})));
    if (std::string_view(ip_type) == "P") {
        EXPECT_TRUE(WaitFor([&] { return l_count() > l_before; }));
    }
    return l_peer;
}

void ScriptedPeer::SendRaw(const std::string& i_bytes) {
    mp_socket->write(i_bytes.data(), static_cast<qint64>(i_bytes.size()));
    mp_socket->flush();
}

void ScriptedPeer::StopReading() {
    mp_socket->disconnect();
    mp_socket->setReadBufferSize(1);
}

ScriptedListener::ScriptedListener() {
    EXPECT_TRUE(m_server.listen(QHostAddress(QHostAddress::LocalHost)));
    m_server.setMaxPendingConnections(1000);
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] { ++m_waiting; });
}

std::unique_ptr<ScriptedPeer> ScriptedListener::Next() {
    if (!WaitFor([this] { return m_server.hasPendingConnections(); }))
        return nullptr;
    --m_waiting;
    return std::make_unique<ScriptedPeer>(m_server.nextPendingConnection());
}

ScriptedServer::ScriptedServer() {
    EXPECT_TRUE(m_server.listen(QHostAddress(QHostAddress::LocalHost)));
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
        mp_client = m_server.nextPendingConnection();
        m_log = std::make_unique<FrameLog>(mp_client);
        from_server::LoginReply l_reply;
        l_reply.accepted = true;
        Send(l_reply);
    });
}

void RecordingLog::Log(QString i_area, int i_level, QString i_text, ItemPtr) {
    if (i_area == QLatin1String("Peer Messenger"))
        lines.push_back(std::to_string(i_level) + " " + ToUtf8(i_text));
}

bool RecordingLog::Has(std::string_view i_line) const {
    return std::find(lines.begin(), lines.end(), i_line) != lines.end();
}

void PeerNetworkTest::SetUp() {
    Network& l_network = TheNetwork();
    ASSERT_TRUE(WaitFor([&] { return l_network.server.IsConnected(); }));
    LetThingsSettle();
    l_network.scriptedServer.Forget();
    m_log.lines.clear();
}

void PeerNetworkTest::TearDown() {
    peerMessenger->SetSharedFilesSource(nullptr);
    peerMessenger->SetSearchReplyReceiver(nullptr);
    for (const char* lp_type : {"uninitialized_socket", "peer_socket", "peer_connection_request_socket"})
        for (Item* lp_item : g(lp_type))
            peerMessenger->DisposeOfSocket(lp_item->AsPointer<QTcpSocket>());
    for (Item* lp_item : g("connect_to_peer_request_socket"))
        SetBack(lp_item, "socket_creation_time", 100);
    FireHalfMinute();
    for (const char* lp_type : {"connect_to_peer_request", "indirect_connect_to_peer_request",
                                "peer_connection_request", "unsent_message", "search_request"})
        g(lp_type).Remove();
    LetThingsSettle();
}

ScriptedServer& PeerNetworkTest::TheServer() {
    return TheNetwork().scriptedServer;
}

ItemPtr PeerNetworkTest::User(const std::string& i_name) {
    return d.GetType("user")->GetItem(i_name);
}

void PeerNetworkTest::SetAddress(const std::string& i_user, long long i_port) {
    User(i_user).Connect(d.GetType("user_port")->GetItem(i_port));
    User(i_user).Connect(d.GetType("user_address")->GetItem(QHostAddress(QHostAddress::LocalHost).toIPv4Address()));
}

void PeerNetworkTest::SetBack(ItemPtr i_item, const char* ip_type, int i_seconds) {
    i_item.Connect(d.GetType(ip_type)->GetItem(ToTimestamp(QDateTime::currentDateTime().addSecs(-i_seconds))));
}

void PeerNetworkTest::FireHalfMinute() {
    QMetaObject::invokeMethod(timerManager->HalfMinuteTimer(), "timeout");
}
