// Who is here: under which address, with what port and figures, and who wants to be told of their coming and going.
#pragma once

#include "server/limits.h"

#include "net/server_messages.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>

class Accounts;
class Session;

class Directory {
public:
    Directory(Accounts& i_accounts, const Limits& i_limits, std::set<std::string> i_privileged);

    // The session's user is here from now on, respectively no longer. Each tells those who track the user. Leave does
    // nothing for a session that has been superseded.
    void Enter(Session& io_session);
    void Leave(Session& io_session);

    Session* Find(std::string_view i_user) const;        // null when they are not here
    TCPAddress AddressOf(std::string_view i_user) const; // all zero when they are not here
    UserStats StatsOf(std::string_view i_user) const;
    bool IsPrivileged(std::string_view i_user) const { return m_privileged.contains(std::string(i_user)); }

    void OnSetWaitPort(Session& i_session, const to_server::SetWaitPort& i_message);
    void OnGetUserAddress(Session& io_session, const to_server::GetUserAddress& i_message);
    void OnAddUser(Session& io_session, const to_server::AddUser& i_message);
    void OnUntrackUser(Session& i_session, const to_server::UntrackUser& i_message);
    void OnGetUserStatus(Session& io_session, const to_server::GetUserStatus& i_message);
    void OnFilesFolders(Session& i_session, const to_server::FilesFolders& i_message);
    void OnGetUserStats(Session& io_session, const to_server::GetUserStats& i_message);
    void OnUploadSpeed(Session& i_session, const to_server::UploadSpeed& i_message);

private:
    struct Visitor {
        Session* session = nullptr;
        int waitPort = 0;
        bool isPortSettled = false;         // told by the client, or no longer waited for
        std::set<std::string> addressAskers; // users who wait for that
        UserStats stats; // of it the speed is a copy from the accounts
        std::set<std::string> tracked;
    };

    Visitor& VisitorOf(const Session& i_session);
    from_server::UserStatus StatusOf(const std::string& i_user) const;
    void SettlePort(const std::string& i_user);
    void AnswerAddressAskers(const std::string& i_user, const std::set<std::string>& i_askers);
    void TellTrackers(const std::string& i_user);
    void StopTracking(Session& i_session, const std::string& i_user);

    Accounts& m_accounts;
    const Limits& m_limits;
    const std::set<std::string> m_privileged;
    std::map<std::string, Visitor, std::less<>> m_visitors;
    std::map<std::string, std::set<Session*>> m_trackers; // by the tracked user, here or not
};
