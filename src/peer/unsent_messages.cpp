// Messages that wait for a connection. The item's value is the address of a MemStream that shares the sender's buffer;
// the stream lives as long as the item.
#include "peer/peer_messenger_private.h"

#include <algorithm>

#include "app/timestamp.h"

void PeerMessenger::QueueUnsentMessage(ItemPtr i_user, const MemStream& i_message) {
    ItemPtr l_item = d.GetType("unsent_message")->NewItem(Value(new MemStream(i_message)));
    const int l_order = m_sendOrder++;
    const auto l_size = static_cast<std::size_t>(i_message.GetWriteIndex());
    mp_private->waiting.emplace(l_order, Private::WaitingMessage{l_item, l_size});
    mp_private->waitingBytes += l_size;
    l_item.Connect(i_user);
    l_item.Connect(d.GetType("send_order")->GetItem(l_order));
    l_item.Connect(d.GetType("send_time")->GetItem(CurrentTimestamp()));

    while (mp_private->waiting.size() > limits::waitingMessages ||
           mp_private->waitingBytes > limits::waitingMessageBytes) {
        ItemPtr l_oldest = mp_private->waiting.begin()->second.item;
        LogPeer(1,
                QStringLiteral("Too many messages are waiting, dropping the oldest, to user %1")
                    .arg(ShownValue(l_oldest, "user")),
                l_oldest["user"]);
        l_oldest.Remove();
    }
}

void PeerMessenger::OnUnsentMessageRemoved(Item* ip_item) {
    const ItemPtr l_item(ip_item);
    const auto l_entry = mp_private->waiting.find(l_item["send_order"].ToInt64().value_or(-1));
    if (l_entry == mp_private->waiting.end() || l_entry->second.item != l_item)
        return; // nothing that we made
    mp_private->waitingBytes -= l_entry->second.size;
    mp_private->waiting.erase(l_entry);
    delete l_item.AsPointer<MemStream>();
}

void PeerMessenger::SendUnsentMessages(const std::string& i_user) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    const ItemSet l_sockets = l_user.GetItems("peer_socket");
    const ItemSet l_messages = l_user.GetItems("unsent_message");
    if (l_sockets.empty() || l_messages.empty())
        return;
    auto* lp_socket = ItemPtr(*l_sockets.begin()).AsPointer<QTcpSocket>();
    LogPeer(1,
            QStringLiteral("Sending %1 pending peer messages to user %2")
                .arg(QString::number(l_messages.size()), ToQString(i_user)),
            l_user);
    for (ItemPtr l_message : l_messages.SortNumericBy("send_order", true)) {
        if (!SendMessage(lp_socket, *l_message.AsPointer<MemStream>()))
            return;
        l_message.Remove();
    }
}
