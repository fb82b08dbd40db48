// What the files of DNetManager share among themselves.
#pragma once

#include <QString>
#include <QTcpSocket>

#include "app/log.h"
#include "app/text.h"
#include "dnet/dnet_manager.h"
#include "dnet/dnet_messages.h"

inline void LogDNet(int i_level, const QString& i_text, ItemPtr i_user = ItemPtr()) {
    Log(QStringLiteral("Distributed Network"), i_level, i_text, i_user);
}

// The value of an entry of dnet_global; null if it has none.
inline ItemPtr DNetValue(const char* ip_entry) {
    return d.GetType("dnet_global")->HasItem(ip_entry)["dnet_value"];
}

inline void SetDNetValue(const char* ip_entry, const Value& i_value) {
    d.GetType("dnet_global")->GetItem(ip_entry)->Connect(d.GetType("dnet_value")->GetItem(i_value));
}

inline void ClearDNetValue(const char* ip_entry) {
    d.GetType("dnet_global")->GetItem(ip_entry)->Disconnect("dnet_value");
}

inline bool HasDNetParent() {
    return static_cast<bool>(DNetValue("dnet_parent_user"));
}

// The item that stands for the socket in that Type; null if it is not of that kind.
inline ItemPtr DNetSocketItem(const char* ip_type, QTcpSocket* ip_socket) {
    return d.GetType(ip_type)->HasItem(Value(ip_socket));
}
