#include "server/login.h"

#include "server/accounts.h"
#include "server/names.h"
#include "server/session.h"

namespace {

void Refuse(Session& io_session, const std::string& i_reason) {
    from_server::LoginReply l_reply;
    l_reply.reason = i_reason;
    io_session.Send(Encode(l_reply));
    io_session.EndAfterSending();
}

} // namespace

Login::Login(Accounts& i_accounts, const Limits& i_limits, bool i_isRegistrationOpen, Admission i_admission)
    : m_accounts(i_accounts), m_limits(i_limits), m_isRegistrationOpen(i_isRegistrationOpen),
      m_admission(std::move(i_admission)), m_workers(i_limits.passwordThreads) {}

std::string Login::FindFault(const to_server::Login& i_message) const {
    if (i_message.userName.empty()) {
        return "A user name is needed.";
    }
    if (i_message.userName.size() > m_limits.name) {
        return "The user name is too long: at most " + std::to_string(m_limits.name) + " bytes are allowed.";
    }
    if (!IsPlainName(i_message.userName, m_limits.name)) {
        return "The user name has invisible characters or a blank at one of its ends.";
    }
    if (i_message.password.empty()) {
        return "A password is needed.";
    }
    if (i_message.password.size() > m_limits.password) {
        return "The password is too long: at most " + std::to_string(m_limits.password) + " bytes are allowed.";
    }
    return {};
}

void Login::OnLogin(Session& io_session, const to_server::Login& i_message) {
    if (const std::string l_fault = FindFault(i_message); !l_fault.empty()) {
        Refuse(io_session, l_fault);
        return;
    }
    const std::optional<Account> l_account = m_accounts.Find(i_message.userName);
    if (!l_account && !m_isRegistrationOpen) {
        Refuse(io_session, "There is no user of this name, and registration is closed.");
        return;
    }
    io_session.BeginLogin();
    auto l_cancelled = std::make_shared<std::atomic<bool>>(false);
    QObject::connect(&io_session, &Session::Ended, [l_cancelled] { *l_cancelled = true; });
    if (l_account) {
        CheckPassword(io_session, i_message, l_account->passwordHash, l_cancelled);
    } else {
        Register(io_session, i_message, l_cancelled);
    }
}

// The answers below come only while the session lives: its end cancels the question.

void Login::CheckPassword(Session& io_session, const to_server::Login& i_message, const std::string& i_hash,
                          PasswordWorkers::Cancelled i_cancelled) {
    m_workers.Check(i_hash, i_message.password, std::move(i_cancelled),
                    [this, &io_session, l_user = i_message.userName](bool i_isRight) {
                        if (io_session.GetState() != Session::State::LoggingIn) {
                            return;
                        }
                        if (i_isRight) {
                            m_admission(io_session, l_user);
                        } else {
                            Refuse(io_session, from_server::LoginReply::invalidPassword);
                        }
                    });
}

void Login::Register(Session& io_session, const to_server::Login& i_message, PasswordWorkers::Cancelled i_cancelled) {
    m_workers.Hash(i_message.password, i_cancelled,
                   [this, &io_session, i_message, i_cancelled](const std::optional<std::string>& i_hash) {
                       if (io_session.GetState() != Session::State::LoggingIn) {
                           return;
                       }
                       const Accounts::AddResult l_result =
                           i_hash ? m_accounts.Add(i_message.userName, *i_hash) : Accounts::AddResult::Failed;
                       if (l_result == Accounts::AddResult::Added) {
                           m_admission(io_session, i_message.userName);
                           return;
                       }
                       // Someone else may have registered the name while this hash was made.
                       const std::optional<Account> l_account = m_accounts.Find(i_message.userName);
                       if (l_account) {
                           CheckPassword(io_session, i_message, l_account->passwordHash, i_cancelled);
                       } else {
                           Refuse(io_session, "The server cannot register users at the moment.");
                       }
                   });
}
