#include "server/relay.h"

#include "server/directory.h"
#include "server/mailbox.h"
#include "server/session.h"

#include <QDateTime>

namespace {

MemStream Encoded(const KeptMessage& i_message) {
    return Encode(from_server::PrivateChat{i_message.id, i_message.time, i_message.sender, i_message.text, true});
}

} // namespace

Relay::Relay(const Directory& i_directory, Mailbox& i_mailbox) : m_directory(i_directory), m_mailbox(i_mailbox) {}

void Relay::DeliverWaiting(Session& io_session) {
    for (const KeptMessage& l_message : m_mailbox.Waiting(io_session.Name())) {
        io_session.Send(Encoded(l_message));
    }
}

// Kept first, then sent: what is lost on the way to a reader comes again at their next login.
void Relay::OnPrivateChat(Session& io_session, const to_server::PrivateChat& i_message) {
    std::optional<KeptMessage> l_kept = m_mailbox.Keep(i_message.user, io_session.Name(), i_message.text);
    Session* lp_reader = m_directory.Find(i_message.user);
    if (!lp_reader) {
        return;
    }
    if (!l_kept) {
        // Too much waits for the reader's acknowledgement: this one goes without a copy, under an id that none has.
        const auto l_now = static_cast<std::int32_t>(QDateTime::currentSecsSinceEpoch());
        l_kept = KeptMessage{-1, l_now, io_session.Name(), i_message.text};
    }
    lp_reader->Send(Encoded(*l_kept));
}

void Relay::OnAcknowledgement(Session& io_session, const to_server::PrivateChatAcknowledgement& i_message) {
    m_mailbox.Acknowledge(io_session.Name(), i_message.messageId);
}

// The asked client connects back to the address told here. For one who is not here the failure is known at once.
void Relay::OnIndirectConnectionRequest(Session& io_session, const to_server::IndirectConnectionRequest& i_message) {
    Session* lp_asked = m_directory.Find(i_message.user);
    if (!lp_asked) {
        io_session.Send(Encode(from_server::IndirectConnectionFailure{i_message.token}));
        return;
    }
    const std::string& l_asker = io_session.Name();
    lp_asked->Send(
        Encode(from_server::PeerConnectionRequest{l_asker, i_message.connectionType, m_directory.AddressOf(l_asker),
                                                  i_message.token, m_directory.IsPrivileged(l_asker)}));
}

void Relay::OnCantConnectToPeer(Session&, const to_server::CantConnectToPeer& i_message) {
    if (Session* lp_asker = m_directory.Find(i_message.user)) {
        lp_asker->Send(Encode(from_server::IndirectConnectionFailure{i_message.token}));
    }
}
