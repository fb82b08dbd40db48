// What goes to and comes from below, and whether the server may name us as a parent.
#include "dnet/dnet_manager_private.h"

#include <algorithm>
#include <vector>

#include "app/settings.h"
#include "dnet/tree_arithmetic.h"
#include "net/limits.h"

void DNetManager::OnDNetParentMinSpeed(int i_speed) {
    LogDNet(1, QStringLiteral("Received parent min speed %1, currently not processing").arg(i_speed));
    m_parentMinSpeed = i_speed;
    DetermineCanParent();
}

void DNetManager::OnDNetParentSpeedConnectionRatio(int i_ratio) {
    LogDNet(1, QStringLiteral("Received parent speed connection ratio %1, currently not processing").arg(i_ratio));
    m_parentSpeedRatio = i_ratio;
    DetermineCanParent();
}

void DNetManager::OnReceivedOwnUploadSpeed(Item*) {
    DetermineCanParent();
}

void DNetManager::DetermineCanParent() {
    const auto l_speed = SettingNumber("upload_speed");
    if (m_parentMinSpeed == -1 || m_parentSpeedRatio == -1 || !l_speed)
        return;
    LogDNet(1, QStringLiteral("Determining whether we can accept child connections."));
    bool l_canParent = false;
    if (!IsFastEnoughForParent(*l_speed, m_parentMinSpeed)) {
        LogDNet(2, QStringLiteral("Below minimum parent speed, so no."));
    } else {
        const auto l_children = static_cast<long long>(d.GetType("dnet_child")->CountItems());
        const long long l_capacity = ChildCapacity(*l_speed, m_parentSpeedRatio);
        LogDNet(2,
                QStringLiteral("Currently have %1 child connections, max capacity %2").arg(l_children).arg(l_capacity));
        l_canParent = l_capacity > l_children;
    }
    if (l_canParent == m_canParent) {
        LogDNet(2, QStringLiteral("No status change, not notifying."));
        return;
    }
    m_canParent = l_canParent;
    LogDNet(2, QStringLiteral("Status changed, sending notification."));
    gp_server->SendDNetCanParent(l_canParent);
}

void DNetManager::OnDNetConnectionRequested(const std::string& i_user, QTcpSocket* ip_socket) {
    const ItemPtr l_user = d.GetType("user")->GetItem(i_user);
    LogDNet(1, QStringLiteral("Child connection accepted from %1").arg(ToQString(i_user)), l_user);
    if (i_user == SettingText("username")) {
        // The server has led us to ourselves, and as our own child we would send each search round for ever.
        LogDNet(2, QStringLiteral("This is our own name, closing."), l_user);
        ip_socket->close();
        ip_socket->deleteLater();
        return;
    }
    if (const ItemPtr l_earlier = l_user["dnet_child"]) {
        LogDNet(2, QStringLiteral("Child connection already found, closing old connection."), l_user);
        auto* const lp_earlier = l_earlier.AsPointer<QTcpSocket>();
        l_earlier.Remove();
        LetGo(lp_earlier);
    }
    d.GetType("dnet_child")->NewItem(Value(ip_socket))->Connect(l_user);
    Keep(ip_socket);
    connect(ip_socket, &QTcpSocket::readyRead, this, &DNetManager::OnChildSocketReadyToRead);
    connect(ip_socket, &QTcpSocket::errorOccurred, this, &DNetManager::OnChildSocketError);
    connect(ip_socket, &QTcpSocket::disconnected, this, &DNetManager::OnChildSocketClosed);

    if (const ItemPtr l_level = DNetValue("dnet_level"))
        WriteToChild(ip_socket, MakeFrame(EncodeDNetLevel(l_level.AsInt())));
    if (const ItemPtr l_leader = DNetValue("dnet_group_leader"))
        WriteToChild(ip_socket, MakeFrame(EncodeDNetGroupLeader(l_leader.AsString())));
    // What has come already is not announced again.
    ReadFrom(ip_socket, &DNetManager::HandleChildMessage, &DNetManager::LoseChild);
}

void DNetManager::OnChildSocketReadyToRead() {
    ReadFrom(qobject_cast<QTcpSocket*>(sender()), &DNetManager::HandleChildMessage, &DNetManager::LoseChild);
}

void DNetManager::OnChildSocketError(QAbstractSocket::SocketError) {
    OnChildSocketClosed();
}

void DNetManager::OnChildSocketClosed() {
    LoseChild(qobject_cast<QTcpSocket*>(sender()));
}

void DNetManager::LoseChild(QTcpSocket* ip_socket) {
    LogDNet(1, QStringLiteral("Child socket closed"));
    LetGo(ip_socket);
    if (const ItemPtr l_child = DNetSocketItem("dnet_child", ip_socket))
        l_child.Remove();
    else
        LogDNet(2, QStringLiteral("Child socket item not found, aborting"));
}

bool DNetManager::HandleChildMessage(QTcpSocket* ip_socket, MemStream& io_message) {
    const auto l_code = DecodeDNetCode(io_message);
    if (!l_code) {
        LogDNet(1, QStringLiteral("Error reading message code, closing child connection"));
        return false;
    }
    const ItemPtr l_child = DNetSocketItem("dnet_child", ip_socket);
    if (!l_child) {
        LetGo(ip_socket);
        return false;
    }
    const ItemPtr l_user = l_child["user"];
    LogDNet(1, QStringLiteral("Received message from child, code %1").arg(static_cast<int>(*l_code)), l_user);
    if (*l_code != DNetCode::ChildDepth)
        return true;
    const auto l_depth = DecodeDNetNumber(io_message);
    if (!l_depth)
        return false;
    LogDNet(1, QStringLiteral("Received child depth %1 from %2").arg(*l_depth).arg(ToQString(l_user.AsView())), l_user);
    l_child.Connect(d.GetType("dnet_child_depth")->GetItem(*l_depth));
    DetermineChildDepth();
    return true;
}

// A depth below 0 counts like one that was not reported.
void DNetManager::DetermineChildDepth() {
    const ItemPtr l_current = DNetValue("dnet_child_depth");
    int l_new = 0;
    for (Item* lp_depth : g("dnet_child").GetItems("dnet_child_depth"))
        l_new = std::max(l_new, OneFurther(lp_depth->AsInt()));
    if (l_new == l_current.AsInt())
        return;
    LogDNet(1, QStringLiteral("New child depth is %1").arg(l_new));
    if (l_new == 0)
        ClearDNetValue("dnet_child_depth");
    else
        SetDNetValue("dnet_child_depth", l_new);
    gp_server->SendChildDepth(l_new != 0);
}

void DNetManager::SendMessageToChildren(std::string_view i_body) {
    if (d.GetType("dnet_child")->CountItems() == 0)
        return;
    // A server's frame may be longer than what a child takes: it would close the connection.
    if (i_body.size() > limits::distributedFrame) {
        LogDNet(1, QStringLiteral("A message of %1 bytes is too long for children").arg(i_body.size()));
        return;
    }
    MemStream l_frame;
    l_frame.EnsureBufferCapacity(static_cast<int>(sizeof(std::int32_t) + i_body.size()));
    l_frame.Write(static_cast<std::int32_t>(i_body.size()));
    l_frame.WriteBuffer(i_body.data(), i_body.size());

    std::vector<QTcpSocket*> l_children;
    for (Item* lp_child : g("dnet_child"))
        l_children.push_back(lp_child->AsPointer<QTcpSocket>());
    for (QTcpSocket* lp_child : l_children)
        WriteToChild(lp_child, l_frame);
}

// A child is let go of when this much is left of what it was sent before: searches come without end, and a child that
// has fallen so far behind does not catch up.
void DNetManager::WriteToChild(QTcpSocket* ip_child, const MemStream& i_frame) {
    if (!m_readers.contains(ip_child))
        return;
    if (ip_child->bytesToWrite() >= static_cast<qint64>(limits::queuedToChild)) {
        LogDNet(1, QStringLiteral("Too much is waiting for a child that does not read, closing connection"));
        LoseChild(ip_child);
        return;
    }
    const std::string_view l_bytes = i_frame.GetWritten();
    // A child that can not be written to is lost by its socket's signals.
    ip_child->write(l_bytes.data(), static_cast<qint64>(l_bytes.size()));
}
