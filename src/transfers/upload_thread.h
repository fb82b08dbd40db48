// The worker of one upload: writes the token, reads the offset, and sends the file from there.
//
// On the wire, little-endian: 4 bytes token out, 8 bytes signed offset in, then the file's bytes from the offset on.
#pragma once

#include "transfers/transfer_thread.h"

#include <functional>

class UploadThread : public TransferThread {
    Q_OBJECT

public:
    // KiB per second, 0 for no limit. Called on the worker before every step.
    using SpeedLimit = std::function<int()>;

    // The limit is that of transferQueueManager.
    UploadThread(QTcpSocket* ip_socket, QFile* ip_file, int i_token);
    UploadThread(QTcpSocket* ip_socket, QFile* ip_file, int i_token, SpeedLimit i_limit,
                 std::chrono::milliseconds i_stallLimit);

Q_SIGNALS:
    // i_position is the offset reached in the file; the rate is the average since the limit last changed.
    void UploadProgress(qint64 i_position, int i_bytesPerSecond);
    void UploadComplete();
    void UploadError();

protected:
    bool Perform() override;
    void EmitProgress(qint64 i_position, int i_bytesPerSecond) override;
    void EmitEnd(bool i_success) override;

private:
    bool SendToken();
    bool ReadOffset(qint64& o_offset);
    bool SendFile(qint64 i_offset, qint64 i_size);
    bool Pause(int i_limit, std::chrono::milliseconds i_time);
    bool SendBlock(qint64 i_offset, qint64 i_count);
    qint64 SendSome(qint64 i_offset, qint64 i_count);
    qint64 SendByCopy(qint64 i_offset, qint64 i_count);
    void WaitForDisconnection();

    const int m_token;
    const SpeedLimit m_limit;
    bool m_kernelCopies = true; // until a file system says that it cannot
};
