#include "ui/status_watch.h"

#include "app/settings.h"
#include "app/timers.h"
#include "net/server.h"
#include "peer/peer_messenger.h"
#include "sharing/shared_folders_manager.h"
#include "ui/display_text.h"
#include "ui/status_bar.h"

#include <QGuiApplication>
#include <QTcpSocket>

#include <array>
#include <chrono>

namespace {

using namespace std::chrono_literals;

constexpr std::string_view c_wrongPassword = "INVALIDPASS";
constexpr std::string_view c_noAnswer = "socket error";

enum class Distance { ThisMachine, PrivateNetwork, World };

Distance DistanceOf(const QHostAddress& i_address) {
    static const std::array c_privateNetworks = {
        QHostAddress::parseSubnet(QStringLiteral("10.0.0.0/8")),
        QHostAddress::parseSubnet(QStringLiteral("172.16.0.0/12")),
        QHostAddress::parseSubnet(QStringLiteral("192.168.0.0/16")),
        QHostAddress::parseSubnet(QStringLiteral("100.64.0.0/10")),
    };
    bool l_isIpv4 = false;
    const quint32 l_ipv4 = i_address.toIPv4Address(&l_isIpv4); // also of an IPv6 address that wraps one
    const QHostAddress l_address = l_isIpv4 ? QHostAddress(l_ipv4) : i_address;
    if (l_address.isLoopback()) {
        return Distance::ThisMachine;
    }
    const auto l_isIn = [&](const auto& i_network) { return l_address.isInSubnet(i_network); };
    return l_address.isLinkLocal() || l_address.isUniqueLocalUnicast() || l_address.isSiteLocal() ||
                   std::ranges::any_of(c_privateNetworks, l_isIn)
               ? Distance::PrivateNetwork
               : Distance::World;
}

// The sum over the transfers of one direction, in bytes per second.
long long SumOfSpeeds(const char* ip_entryType) {
    long long l_sum = 0;
    for (const Item* const lp_speed : g("bytes_per_second").Connected(ip_entryType)) {
        l_sum += *lp_speed->AsPointer<int>();
    }
    return l_sum;
}

} // namespace

bool IsCallFromOutside(const QHostAddress& i_caller, const QHostAddress& i_server) {
    return !i_caller.isNull() && !i_server.isNull() && DistanceOf(i_caller) >= DistanceOf(i_server);
}

StatusWatch::StatusWatch(StatusBar& i_bar) : m_bar(i_bar), m_loss(tr("Not connected")) {
    m_bar.ShowConnection(m_loss);
    FollowConnection();
    FollowCallers();
    FollowShares();
    FollowTransfers();
}

StatusWatch::~StatusWatch() {
    if (m_isWalking) {
        OnWalkOver();
    }
}

// --- The connection ---

void StatusWatch::FollowConnection() {
    connect(gp_server, &Server::Connecting, this, &StatusWatch::OnConnecting);
    connect(gp_server, &Server::Connected, this, &StatusWatch::OnConnected);
    connect(gp_server, &Server::Disconnected, this, &StatusWatch::OnDisconnected);
    connect(gp_server, &Server::ConnectionFailed, this, &StatusWatch::OnConnectionFailed);
    m_waitTimer.setInterval(1s);
    connect(&m_waitTimer, &QTimer::timeout, this, &StatusWatch::ShowWait);
}

void StatusWatch::ExpectDisconnection() {
    m_loss = tr("Not connected");
    m_isRetryComing = false;
}

void StatusWatch::TellHowToConnect() {
    if (m_waitTimer.isActive() || m_isRetryComing) {
        return;
    }
    m_bar.ShowConnection(tr("Not connected; \"Connect\" in the Connection menu logs in"));
}

void StatusWatch::OnConnecting() {
    m_waitTimer.stop();
    m_loss = tr("The server does not answer");
    m_isRetryComing = true;
    m_bar.ShowConnection(tr("Connecting…"));
}

void StatusWatch::OnConnected() {
    m_server = gp_server->PeerAddress();
    m_loss = tr("Connection lost");
    m_bar.ShowConnection(tr("Connected as %1").arg(LabelText(SettingText("username"))));
}

void StatusWatch::OnDisconnected() {
    if (m_isRetryComing) {
        m_waitTimer.start();
        ShowWait();
    } else {
        m_bar.ShowConnection(m_loss);
    }
}

// A refusal ends the attempt without a Disconnected signal, and is not tried again.
void StatusWatch::OnConnectionFailed(std::string i_reason) {
    if (i_reason == c_noAnswer) {
        return;
    }
    const QString l_reason = i_reason == c_wrongPassword ? tr("wrong password") : LabelText(i_reason);
    m_loss = tr("Login refused: %1").arg(l_reason);
    m_isRetryComing = false;
    m_bar.ShowConnection(m_loss);
}

void StatusWatch::ShowWait() {
    const auto l_seconds =
        std::chrono::round<std::chrono::seconds>(timerManager->HalfMinuteTimer()->remainingTimeAsDuration());
    m_bar.ShowConnection(tr("%1; next try in %2 s").arg(m_loss).arg(l_seconds.count()), m_loss);
}

// --- How others reach us ---

void StatusWatch::FollowCallers() {
    connect(peerMessenger, &PeerMessenger::ListenFinished, this, &StatusWatch::OnListenFinished);
    d.GetType("uninitialized_socket")->m_itemAdded.AddHandler(MakeHandler(this, &StatusWatch::OnCaller));
}

void StatusWatch::OnListenFinished() {
    const std::string l_error = peerMessenger->ListenError();
    if (l_error.empty()) {
        ShowListening(false);
    } else {
        m_bar.ShowListening(StatusBar::Reach::Deaf, tr("Not reachable"), CellText(l_error));
    }
}

void StatusWatch::OnCaller(Item* ip_socket) {
    if (IsCallFromOutside(ip_socket->AsPointer<QTcpSocket>()->peerAddress(), m_server)) {
        ShowListening(true);
    }
}

void StatusWatch::ShowListening(bool i_isReached) {
    m_bar.ShowListening(i_isReached ? StatusBar::Reach::Reached : StatusBar::Reach::Unknown,
                        tr("Port %1").arg(peerMessenger->ListeningPort()),
                        i_isReached ? tr("Others have reached this port")
                                    : tr("Listening; nobody from outside has come to this port yet"));
}

// --- The shares ---

void StatusWatch::FollowShares() {
    Type* const lp_folder = d.GetType("shared_folder");
    lp_folder->m_itemAdded.AddHandler(MakeHandler(this, &StatusWatch::OnSharedFolderChanged));
    lp_folder->m_itemRemoved.AddHandler(MakeHandler(this, &StatusWatch::OnSharedFolderChanged));
    m_sharesTimer.setSingleShot(true);
    connect(sharedFoldersManager, &SharedFoldersManager::SharedFilesRescanned, this, &StatusWatch::ShowShares);
    connect(&m_sharesTimer, &QTimer::timeout, this, &StatusWatch::ShowShares);
    m_walkTimer.setSingleShot(true);
    connect(sharedFoldersManager, &SharedFoldersManager::WalkProgressed, this, &StatusWatch::OnWalkProgressed);
    connect(&m_walkTimer, &QTimer::timeout, this, &StatusWatch::OnWalkOver);
}

// The files of the folder come or go after this, but in the same turn of the event loop.
void StatusWatch::OnSharedFolderChanged(Item*) {
    m_sharesTimer.start(0);
}

void StatusWatch::ShowShares() {
    m_bar.ShowShares(static_cast<long long>(d.GetType("shared_file")->CountItems()),
                     static_cast<long long>(d.GetType("shared_file_folder")->CountItems()));
}

// A walk runs to its end without the event loop, so that the timer tells that it is over. Each root is counted anew.
void StatusWatch::OnWalkProgressed(int i_files) {
    if (!m_isWalking) {
        m_isWalking = true;
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
        m_walkTimer.start(0);
    }
    if (i_files < m_walked) {
        m_walkedBefore += m_walked;
    }
    m_walked = i_files;
    m_bar.ShowWalk(m_walkedBefore + m_walked);
}

void StatusWatch::OnWalkOver() {
    m_isWalking = false;
    m_walkedBefore = 0;
    m_walked = 0;
    QGuiApplication::restoreOverrideCursor();
    m_bar.EndWalk();
    ShowShares();
}

// --- The transfers ---

void StatusWatch::FollowTransfers() {
    Type* const lp_speed = d.GetType("bytes_per_second");
    lp_speed->m_itemAdded.AddHandler(MakeHandler(this, &StatusWatch::OnTransferBegun));
    lp_speed->m_itemRemoved.AddHandler(MakeHandler(this, &StatusWatch::OnTransferEnded));
    connect(&m_speedTimer, &QTimer::timeout, this, &StatusWatch::ShowSpeeds);
}

// A transfer has its speed for as long as it runs.
void StatusWatch::OnTransferBegun(Item*) {
    if (!m_speedTimer.isActive()) {
        m_speedTimer.start(1s);
    }
}

void StatusWatch::OnTransferEnded(Item*) {
    m_speedTimer.start(0);
}

void StatusWatch::ShowSpeeds() {
    m_bar.ShowSpeeds(SumOfSpeeds("download_entry"), SumOfSpeeds("upload_entry"));
    if (d.GetType("bytes_per_second")->CountItems() == 0) {
        m_speedTimer.stop();
    } else {
        m_speedTimer.setInterval(1s);
    }
}
