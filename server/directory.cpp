#include "server/directory.h"

#include "server/accounts.h"
#include "server/session.h"

#include <QTimer>

#include <algorithm>
#include <utility>

Directory::Directory(Accounts& i_accounts, const Limits& i_limits, std::set<std::string> i_privileged)
    : m_accounts(i_accounts), m_limits(i_limits), m_privileged(std::move(i_privileged)) {}

void Directory::Enter(Session& io_session) {
    Visitor l_visitor;
    l_visitor.session = &io_session;
    l_visitor.stats = StatsOf(io_session.Name());
    m_visitors.insert_or_assign(io_session.Name(), std::move(l_visitor));
    if (!m_privileged.empty()) {
        io_session.Send(Encode(from_server::PrivilegedUsers{m_privileged}));
    }
    QTimer::singleShot(m_limits.portGrace, &io_session, [this, &io_session] {
        if (Find(io_session.Name()) == &io_session) {
            SettlePort(io_session.Name());
        }
    });
    TellTrackers(io_session.Name());
}

void Directory::Leave(Session& io_session) {
    const auto l_visitor = m_visitors.find(io_session.Name());
    if (l_visitor == m_visitors.end() || l_visitor->second.session != &io_session) {
        return;
    }
    for (const std::string& l_user : l_visitor->second.tracked) {
        StopTracking(io_session, l_user);
    }
    const std::set<std::string> l_askers = std::move(l_visitor->second.addressAskers);
    m_visitors.erase(l_visitor);
    AnswerAddressAskers(io_session.Name(), l_askers);
    TellTrackers(io_session.Name());
}

Session* Directory::Find(std::string_view i_user) const {
    const auto l_visitor = m_visitors.find(i_user);
    return l_visitor == m_visitors.end() ? nullptr : l_visitor->second.session;
}

TCPAddress Directory::AddressOf(std::string_view i_user) const {
    const auto l_visitor = m_visitors.find(i_user);
    return l_visitor == m_visitors.end() ? TCPAddress()
                                         : TCPAddress(l_visitor->second.session->Address(), l_visitor->second.waitPort);
}

UserStats Directory::StatsOf(std::string_view i_user) const {
    const auto l_visitor = m_visitors.find(i_user);
    if (l_visitor != m_visitors.end()) {
        return l_visitor->second.stats;
    }
    UserStats l_stats;
    if (const std::optional<Account> l_account = m_accounts.Find(i_user)) {
        l_stats.averageSpeed = l_account->averageSpeed;
        l_stats.statsValue64 = l_account->speedReports;
    }
    return l_stats;
}

Directory::Visitor& Directory::VisitorOf(const Session& i_session) {
    return m_visitors.at(i_session.Name()); // messages come only from sessions that have entered
}

from_server::UserStatus Directory::StatusOf(const std::string& i_user) const {
    return {i_user, Find(i_user) ? from_server::statusOnline : from_server::statusOffline, IsPrivileged(i_user)};
}

void Directory::TellTrackers(const std::string& i_user) {
    const auto l_trackers = m_trackers.find(i_user);
    if (l_trackers == m_trackers.end()) {
        return;
    }
    const MemStream l_frame = MakeFrame(Encode(StatusOf(i_user)));
    for (Session* lp_tracker : l_trackers->second) {
        lp_tracker->SendFrame(l_frame.GetWritten());
    }
}

void Directory::StopTracking(Session& i_session, const std::string& i_user) {
    const auto l_trackers = m_trackers.find(i_user);
    if (l_trackers != m_trackers.end() && l_trackers->second.erase(&i_session) == 1 && l_trackers->second.empty()) {
        m_trackers.erase(l_trackers);
    }
}

void Directory::OnSetWaitPort(Session& i_session, const to_server::SetWaitPort& i_message) {
    VisitorOf(i_session).waitPort = limits::IsConnectablePort(i_message.port) ? i_message.port : 0;
    SettlePort(i_session.Name());
}

void Directory::SettlePort(const std::string& i_user) {
    Visitor& l_visitor = m_visitors.at(i_user);
    l_visitor.isPortSettled = true;
    AnswerAddressAskers(i_user, std::exchange(l_visitor.addressAskers, {}));
}

void Directory::AnswerAddressAskers(const std::string& i_user, const std::set<std::string>& i_askers) {
    const MemStream l_frame = MakeFrame(Encode(from_server::UserAddress{i_user, AddressOf(i_user)}));
    for (const std::string& l_asker : i_askers) {
        if (Session* lp_asker = Find(l_asker)) {
            lp_asker->SendFrame(l_frame.GetWritten());
        }
    }
}

void Directory::OnGetUserAddress(Session& io_session, const to_server::GetUserAddress& i_message) {
    const auto l_asked = m_visitors.find(i_message.user);
    if (l_asked != m_visitors.end() && !l_asked->second.isPortSettled) {
        l_asked->second.addressAskers.insert(io_session.Name());
        return;
    }
    io_session.Send(Encode(from_server::UserAddress{i_message.user, AddressOf(i_message.user)}));
}

// A name that nobody has yet is tracked all the same: its owner may register while the client waits.
void Directory::OnAddUser(Session& io_session, const to_server::AddUser& i_message) {
    Visitor& l_visitor = VisitorOf(io_session);
    if (i_message.user.size() <= m_limits.name && l_visitor.tracked.size() < m_limits.trackedUsers) {
        l_visitor.tracked.insert(i_message.user);
        m_trackers[i_message.user].insert(&io_session);
    }
    from_server::AddUserReply l_reply;
    l_reply.user = i_message.user;
    l_reply.exists = Find(i_message.user) || m_accounts.Find(i_message.user);
    l_reply.status = StatusOf(i_message.user).status;
    l_reply.stats = StatsOf(i_message.user);
    io_session.Send(Encode(l_reply));
}

void Directory::OnUntrackUser(Session& i_session, const to_server::UntrackUser& i_message) {
    VisitorOf(i_session).tracked.erase(i_message.user);
    StopTracking(i_session, i_message.user);
}

void Directory::OnGetUserStatus(Session& io_session, const to_server::GetUserStatus& i_message) {
    io_session.Send(Encode(StatusOf(i_message.user)));
}

void Directory::OnFilesFolders(Session& i_session, const to_server::FilesFolders& i_message) {
    UserStats& l_stats = VisitorOf(i_session).stats;
    l_stats.sharedFileCount = std::max(0, i_message.fileCount);
    l_stats.statsValue32 = std::max(0, i_message.folderCount);
}

void Directory::OnGetUserStats(Session& io_session, const to_server::GetUserStats& i_message) {
    io_session.Send(Encode(from_server::ReceivedUserStats{i_message.user, StatsOf(i_message.user)}));
}

void Directory::OnUploadSpeed(Session& i_session, const to_server::UploadSpeed& i_message) {
    m_accounts.RecordSpeed(i_session.Name(), i_message.speed);
    UserStats& l_stats = VisitorOf(i_session).stats;
    if (const std::optional<Account> l_account = m_accounts.Find(i_session.Name())) {
        l_stats.averageSpeed = l_account->averageSpeed;
        l_stats.statsValue64 = l_account->speedReports;
    }
}
