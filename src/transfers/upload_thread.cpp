#include "transfers/upload_thread.h"

#include "transfers/pace.h"
#include "transfers/transfer_queue_manager.h"

#include <QFile>
#include <QTcpSocket>
#include <QtEndian>

#include <algorithm>
#include <cerrno>
#include <sys/sendfile.h>
#include <sys/socket.h>
#include <unistd.h>

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

constexpr qint64 kBlock = 8192; // the step under a limit
// The step without one. The kernel takes what the connection has room for, so a step ends long before a wait.
constexpr qint64 kFreeStep = 1 << 20;
constexpr milliseconds kLimitSlice{100}; // how soon a pause notices that the limit has changed

// Of a result of a system call on the non-blocking socket.
bool MustWait() {
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
}

} // namespace

UploadThread::UploadThread(QTcpSocket* ip_socket, QFile* ip_file, int i_token)
    : UploadThread(
          ip_socket, ip_file, i_token, [] { return transferQueueManager->GetUploadSpeed(); }, kStallLimit) {}

UploadThread::UploadThread(QTcpSocket* ip_socket, QFile* ip_file, int i_token, SpeedLimit i_limit,
                           milliseconds i_stallLimit)
    : TransferThread(ip_socket, ip_file, i_stallLimit), m_token(i_token), m_limit(std::move(i_limit)) {}

void UploadThread::EmitProgress(qint64 i_position, int i_bytesPerSecond) {
    Q_EMIT UploadProgress(i_position, i_bytesPerSecond);
}

void UploadThread::EmitEnd(bool i_success) {
    if (i_success) {
        Q_EMIT UploadComplete();
    } else {
        Q_EMIT UploadError();
    }
}

bool UploadThread::Perform() {
    qint64 l_offset = 0;
    if (!SendToken() || !ReadOffset(l_offset)) {
        return false;
    }
    const qint64 l_size = mp_file->size();
    if (l_offset < 0 || l_offset >= l_size || !SendFile(l_offset, l_size)) {
        return false;
    }
    WaitForDisconnection();
    return true;
}

bool UploadThread::SendToken() {
    char l_bytes[4];
    qToLittleEndian(static_cast<quint32>(m_token), l_bytes);
    return mp_socket->write(l_bytes, sizeof l_bytes) == sizeof l_bytes && FlushSocket();
}

bool UploadThread::ReadOffset(qint64& o_offset) {
    char l_bytes[8];
    qint64 l_have = 0;
    // The socket object may have taken bytes in on the main thread; what came later is still with the kernel.
    while (l_have < 8) {
        if (mp_socket->bytesAvailable() > 0) {
            const qint64 l_read = mp_socket->read(l_bytes + l_have, 8 - l_have);
            if (l_read <= 0) {
                return false;
            }
            l_have += l_read;
            continue;
        }
        if (WaitForSocket(false, m_stallLimit) != Wait::Ready) {
            return false;
        }
        const ssize_t l_got = recv(static_cast<int>(mp_socket->socketDescriptor()), l_bytes + l_have, 8 - l_have, 0);
        if (l_got == 0 || (l_got == -1 && !MustWait())) {
            return false;
        }
        l_have += std::max<ssize_t>(l_got, 0);
    }
    o_offset = qFromLittleEndian<qint64>(l_bytes);
    return true;
}

bool UploadThread::SendFile(qint64 i_offset, qint64 i_size) {
    auto l_windowStart = steady_clock::now();
    qint64 l_windowBytes = 0;
    int l_limit = m_limit();
    while (i_offset < i_size) {
        if (ExitSignalled()) {
            return false;
        }
        const int l_newLimit = m_limit();
        if (l_newLimit != l_limit) {
            l_limit = l_newLimit;
            l_windowStart = steady_clock::now();
            l_windowBytes = 0;
        }
        const auto l_elapsed = duration_cast<milliseconds>(steady_clock::now() - l_windowStart);
        if (!Pause(l_limit, PauseBeforeBlock(l_limit, l_elapsed, l_windowBytes))) {
            continue;
        }
        qint64 l_sent = std::min(l_limit > 0 ? kBlock : kFreeStep, i_size - i_offset);
        if (l_limit > 0) {
            if (!SendBlock(i_offset, l_sent)) {
                return false;
            }
        } else if ((l_sent = SendSome(i_offset, l_sent)) == -1) {
            return false;
        }
        if (l_sent > 0) {
            i_offset += l_sent;
            l_windowBytes += l_sent;
            ReportProgress(
                i_offset, AverageRate(l_windowBytes, duration_cast<milliseconds>(steady_clock::now() - l_windowStart)));
        }
    }
    return true;
}

// False when the pause was cut short, by a stop or by a new limit.
bool UploadThread::Pause(int i_limit, milliseconds i_time) {
    while (i_time > milliseconds(0)) {
        const milliseconds l_slice = std::min(i_time, kLimitSlice);
        if (!Sleep(l_slice) || m_limit() != i_limit) {
            return false;
        }
        i_time -= l_slice;
    }
    return true;
}

bool UploadThread::SendBlock(qint64 i_offset, qint64 i_count) {
    while (i_count > 0) {
        const qint64 l_sent = SendByCopy(i_offset, i_count);
        if (l_sent == -1) {
            return false;
        }
        i_offset += l_sent;
        i_count -= l_sent;
    }
    return true;
}

// One call to the kernel. Answers what it took; 0 after a wait for room, -1 on failure.
qint64 UploadThread::SendSome(qint64 i_offset, qint64 i_count) {
    if (!m_kernelCopies) {
        return SendByCopy(i_offset, i_count);
    }
    off_t l_offset = i_offset;
    const ssize_t l_sent = sendfile(static_cast<int>(mp_socket->socketDescriptor()), mp_file->handle(), &l_offset,
                                    static_cast<size_t>(i_count));
    if (l_sent > 0) {
        return l_sent;
    }
    if (l_sent == 0) {
        return -1; // the file has become shorter
    }
    if (errno == EINVAL || errno == ENOSYS) {
        m_kernelCopies = false;
        return 0;
    }
    return MustWait() && WaitForSocket(true, m_stallLimit) == Wait::Ready ? 0 : -1;
}

// The same through a buffer of one block.
qint64 UploadThread::SendByCopy(qint64 i_offset, qint64 i_count) {
    char l_block[kBlock];
    const qint64 l_count = std::min(i_count, kBlock);
    qint64 l_have = 0;
    while (l_have < l_count) {
        const ssize_t l_read = pread(mp_file->handle(), l_block + l_have, static_cast<size_t>(l_count - l_have),
                                     static_cast<off_t>(i_offset + l_have));
        if (l_read == 0 || (l_read == -1 && errno != EINTR)) {
            return -1;
        }
        l_have += std::max<ssize_t>(l_read, 0);
    }
    const ssize_t l_sent =
        send(static_cast<int>(mp_socket->socketDescriptor()), l_block, static_cast<size_t>(l_count), MSG_NOSIGNAL);
    if (l_sent >= 0) {
        return l_sent;
    }
    return MustWait() && WaitForSocket(true, m_stallLimit) == Wait::Ready ? 0 : -1;
}

// The peer closes when it has everything; until then the connection stays open, so that nothing in flight is lost.
void UploadThread::WaitForDisconnection() {
    const auto l_end = steady_clock::now() + m_stallLimit;
    char l_ignored[kBlock];
    for (;;) {
        const auto l_left = duration_cast<milliseconds>(l_end - steady_clock::now());
        if (WaitForSocket(false, l_left) != Wait::Ready) {
            return;
        }
        const ssize_t l_got = recv(static_cast<int>(mp_socket->socketDescriptor()), l_ignored, sizeof l_ignored, 0);
        if (l_got == 0 || (l_got == -1 && !MustWait())) {
            return;
        }
    }
}
