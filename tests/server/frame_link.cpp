#include "server/frame_link.h"

#include <gtest/gtest.h>

FrameLink::FrameLink(std::unique_ptr<QTcpSocket> i_socket)
    : mp_socket(std::move(i_socket)), mp_reader(std::make_unique<FrameReader>(limits::serverFrame)) {}

void FrameLink::SendBytes(std::string_view i_bytes) {
    mp_socket->write(i_bytes.data(), static_cast<qint64>(i_bytes.size()));
    mp_socket->flush();
}

void FrameLink::Flush() {
    while (mp_socket->bytesToWrite() > 0 && mp_socket->waitForBytesWritten(g_patienceMs)) {
    }
}

bool FrameLink::AwaitClose() {
    while (ReceiveFrame()) {
    }
    return m_isClosed;
}

bool FrameLink::ReceiveBody() {
    while (mp_reader->TakeFrom(*mp_socket) == FrameReader::Status::NeedMore) {
        if (!mp_socket->waitForReadyRead(g_patienceMs) && mp_socket->bytesAvailable() == 0) {
            m_isClosed = mp_socket->state() != QAbstractSocket::ConnectedState;
            return false;
        }
    }
    return mp_reader->GetStatus() == FrameReader::Status::FrameReady;
}

bool FrameLink::ReceiveFrame() {
    if (!ReceiveBody())
        return false;
    Received l_received;
    l_received.body = mp_reader->Frame();
    EXPECT_TRUE(l_received.body.Read(l_received.code));
    m_received.push_back(l_received);
    mp_reader->Renew();
    return true;
}
