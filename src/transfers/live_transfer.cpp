#include "transfers/live_transfer.h"

#include "transfers/transfer_thread.h"

#include <QFile>
#include <QTcpSocket>

namespace {

void Delete(QObject* ip_object, Deletion i_deletion) {
    if (i_deletion == Deletion::Now) {
        delete ip_object;
    } else {
        ip_object->deleteLater();
    }
}

// Takes the item out of the store and answers the object whose address it held; null without an item.
template <class T>
T* Take(ItemPtr i_entry, const char* ip_type) {
    const ItemPtr l_item = i_entry[ip_type];
    T* const lp_object = l_item.AsPointer<T>();
    if (l_item) {
        l_item.Remove();
    }
    return lp_object;
}

} // namespace

void SignalLiveTransfer(ItemPtr i_entry, const LiveTypes& i_types) {
    if (auto* lp_thread = i_entry[i_types.thread].AsPointer<TransferThread>()) {
        lp_thread->SignalExit();
    }
}

void EndLiveTransfer(ItemPtr i_entry, const LiveTypes& i_types, Deletion i_deletion) {
    if (auto* lp_thread = Take<TransferThread>(i_entry, i_types.thread)) {
        lp_thread->SignalExit();
        lp_thread->wait();
        Delete(lp_thread, i_deletion);
    }
    delete Take<QFile>(i_entry, i_types.file);
    if (auto* lp_socket = Take<QTcpSocket>(i_entry, i_types.socket)) {
        lp_socket->disconnect();
        lp_socket->close();
        Delete(lp_socket, i_deletion);
    }
    for (const char* lp_type : {i_types.position, "last_receipt_time", "bytes_per_second"}) {
        if (const ItemPtr l_cell = i_entry[lp_type]) {
            l_cell.Remove();
        }
    }
}
