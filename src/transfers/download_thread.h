// The worker of one download: takes the rest of the file from the socket and appends it.
#pragma once

#include "transfers/transfer_thread.h"

class DownloadThread : public TransferThread {
    Q_OBJECT

public:
    // i_size is the length of the whole file in bytes, i_position how much of it the file holds already. A file that is
    // longer than it should be fails.
    DownloadThread(QTcpSocket* ip_socket, QFile* ip_file, long long i_size, long long i_position,
                   std::chrono::milliseconds i_stallLimit = kStallLimit);

Q_SIGNALS:
    // i_position counts what the file held before; the rate does not.
    void DownloadProgress(qint64 i_position, int i_bytesPerSecond);
    // The file is closed by then. On success so is the socket.
    void DownloadComplete();
    void DownloadError();

protected:
    bool Perform() override;
    void EmitProgress(qint64 i_position, int i_bytesPerSecond) override;
    void EmitEnd(bool i_success) override;

private:
    bool ReceiveRest();
    qint64 ReceiveSome(char* op_bytes, qint64 i_count);
    bool WriteAll(const char* ip_bytes, qint64 i_count);

    const long long m_size;
    long long m_position;
};
