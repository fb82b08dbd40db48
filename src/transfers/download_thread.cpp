#include "transfers/download_thread.h"

#include "transfers/pace.h"

#include <QFile>
#include <QTcpSocket>

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

// Whatever arrives goes to the file at once; this only bounds how much one step can take.
constexpr qint64 kStep = 256 * 1024;

} // namespace

DownloadThread::DownloadThread(QTcpSocket* ip_socket, QFile* ip_file, long long i_size, long long i_position,
                               milliseconds i_stallLimit)
    : TransferThread(ip_socket, ip_file, i_stallLimit), m_size(i_size), m_position(i_position) {}

void DownloadThread::EmitProgress(qint64 i_position, int i_bytesPerSecond) {
    Q_EMIT DownloadProgress(i_position, i_bytesPerSecond);
}

void DownloadThread::EmitEnd(bool i_success) {
    if (i_success) {
        Q_EMIT DownloadComplete();
    } else {
        Q_EMIT DownloadError();
    }
}

bool DownloadThread::Perform() {
    const bool l_success = m_position <= m_size && (m_position == m_size || ReceiveRest());
    if (l_success) {
        mp_socket->close();
    }
    mp_file->close();
    return l_success;
}

bool DownloadThread::ReceiveRest() {
    if (!FlushSocket()) { // the offset that the uploader waits for
        return false;
    }
    std::vector<char> l_buffer(kStep);
    const auto l_start = steady_clock::now();
    qint64 l_received = 0;
    while (m_position < m_size) {
        if (ExitSignalled()) {
            return false;
        }
        const qint64 l_got = ReceiveSome(l_buffer.data(), std::min<qint64>(kStep, m_size - m_position));
        if (l_got == -1 || !WriteAll(l_buffer.data(), l_got)) {
            return false;
        }
        if (l_got > 0) {
            m_position += l_got;
            l_received += l_got;
            ReportProgress(m_position,
                           AverageRate(l_received, duration_cast<milliseconds>(steady_clock::now() - l_start)));
        }
    }
    return true;
}

// Answers what there was; 0 after a wait for more, -1 on failure.
qint64 DownloadThread::ReceiveSome(char* op_bytes, qint64 i_count) {
    // What the socket object took in on the main thread comes first; the rest is still with the kernel.
    if (mp_socket->bytesAvailable() > 0) {
        return mp_socket->read(op_bytes, std::min(i_count, mp_socket->bytesAvailable()));
    }
    const ssize_t l_got =
        recv(static_cast<int>(mp_socket->socketDescriptor()), op_bytes, static_cast<size_t>(i_count), 0);
    if (l_got > 0) {
        return l_got;
    }
    const bool l_wait = l_got == -1 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR);
    return l_wait && WaitForSocket(false, m_stallLimit) == Wait::Ready ? 0 : -1;
}

bool DownloadThread::WriteAll(const char* ip_bytes, qint64 i_count) {
    while (i_count > 0) {
        const ssize_t l_written = write(mp_file->handle(), ip_bytes, static_cast<size_t>(i_count));
        if (l_written == 0 || (l_written == -1 && errno != EINTR)) {
            return false;
        }
        ip_bytes += std::max<ssize_t>(l_written, 0);
        i_count -= std::max<ssize_t>(l_written, 0);
    }
    return true;
}
