// Decides who may come in, and registers newcomers.
#pragma once

#include "server/limits.h"
#include "server/passwords.h"

#include "net/server_messages.h"

#include <functional>
#include <string>

class Accounts;
class Session;

class Login {
public:
    // Called from the event loop when a session's user has proved who they are.
    using Admission = std::function<void(Session&, const std::string& i_user)>;

    Login(Accounts& i_accounts, const Limits& i_limits, bool i_isRegistrationOpen, Admission i_admission);

    // Ends in the admission, in a refusal that ends the session, or in nothing when the session ends meanwhile.
    void OnLogin(Session& io_session, const to_server::Login& i_message);

private:
    std::string FindFault(const to_server::Login& i_message) const; // the reason of the refusal, empty if none
    void Register(Session& io_session, const to_server::Login& i_message, PasswordWorkers::Cancelled i_cancelled);
    void CheckPassword(Session& io_session, const to_server::Login& i_message, const std::string& i_hash,
                       PasswordWorkers::Cancelled i_cancelled);

    Accounts& m_accounts;
    const Limits& m_limits;
    const bool m_isRegistrationOpen;
    const Admission m_admission;
    PasswordWorkers m_workers;
};
