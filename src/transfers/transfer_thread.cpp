#include "transfers/transfer_thread.h"

#include <QFile>
#include <QTcpSocket>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <utility>

using std::chrono::duration_cast;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

// The kernel raises SIGPIPE in the thread that writes to a closed connection; sendfile has no flag against it.
void BlockBrokenPipeSignal() {
    sigset_t l_set;
    sigemptyset(&l_set);
    sigaddset(&l_set, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &l_set, nullptr);
}

} // namespace

TransferThread::TransferThread(QTcpSocket* ip_socket, QFile* ip_file, milliseconds i_stallLimit)
    : mp_socket(ip_socket), mp_file(ip_file), m_stallLimit(i_stallLimit),
      m_wakeDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), m_spareDescriptor(eventfd(0, EFD_CLOEXEC)) {
    m_spacing.setSingleShot(true);
    connect(&m_spacing, &QTimer::timeout, this, &TransferThread::DeliverProgress);
}

TransferThread::~TransferThread() {
    for (const int l_descriptor : {m_wakeDescriptor, m_spareDescriptor}) {
        if (l_descriptor != -1) {
            close(l_descriptor);
        }
    }
}

void TransferThread::Begin() {
    QMetaObject::invokeMethod(this, &TransferThread::TakeSocketAndStart, Qt::QueuedConnection);
}

void TransferThread::TakeSocketAndStart() {
    if (ExitSignalled()) {
        return;
    }
    if (m_wakeDescriptor == -1 || m_spareDescriptor == -1) {
        OnEnd(false);
        return;
    }
    close(std::exchange(m_spareDescriptor, -1));
    mp_socket->setParent(nullptr);
    mp_socket->moveToThread(this);
    start(QThread::InheritPriority);
}

void TransferThread::SignalExit() {
    const QMutexLocker l_lock(&m_exitMutex);
    m_exit = true;
    if (m_wakeDescriptor != -1) {
        eventfd_write(m_wakeDescriptor, 1); // fails only when the counter is full, and then it wakes already
    }
}

bool TransferThread::ExitSignalled() const {
    const QMutexLocker l_lock(&m_exitMutex);
    return m_exit;
}

void TransferThread::run() {
    BlockBrokenPipeSignal();
    const bool l_success = Perform();
    mp_socket->moveToThread(thread());
    QMetaObject::invokeMethod(
        this, [this, l_success] { OnEnd(l_success); }, Qt::QueuedConnection);
}

TransferThread::Wait TransferThread::WaitForSocket(bool i_toWrite, milliseconds i_limit) const {
    const int l_socket = static_cast<int>(mp_socket->socketDescriptor());
    if (l_socket == -1) {
        return Wait::Failed;
    }
    pollfd l_polled[2] = {{l_socket, static_cast<short>(i_toWrite ? POLLOUT : POLLIN), 0},
                          {m_wakeDescriptor, POLLIN, 0}};
    const auto l_end = steady_clock::now() + i_limit;
    while (!ExitSignalled()) {
        const milliseconds l_left = duration_cast<milliseconds>(l_end - steady_clock::now());
        const int l_ready = poll(l_polled, 2, static_cast<int>(std::max<long long>(l_left.count(), 0)));
        if (l_ready == -1 && errno != EINTR) {
            return Wait::Failed;
        }
        if (l_ready > 0 && l_polled[0].revents != 0 && l_polled[1].revents == 0) {
            return Wait::Ready;
        }
        if (l_ready == 0) {
            return Wait::TimedOut;
        }
    }
    return Wait::Stopped;
}

bool TransferThread::Sleep(milliseconds i_time) const {
    pollfd l_polled = {m_wakeDescriptor, POLLIN, 0};
    const auto l_end = steady_clock::now() + i_time;
    while (!ExitSignalled()) {
        const milliseconds l_left = duration_cast<milliseconds>(l_end - steady_clock::now());
        if (l_left <= milliseconds(0)) {
            return true;
        }
        poll(&l_polled, 1, static_cast<int>(l_left.count()));
    }
    return false;
}

bool TransferThread::FlushSocket() {
    while (mp_socket->bytesToWrite() > 0) {
        if (mp_socket->flush()) {
            continue;
        }
        if (mp_socket->state() != QAbstractSocket::ConnectedState || WaitForSocket(true, m_stallLimit) != Wait::Ready) {
            return false;
        }
    }
    return true;
}

void TransferThread::ReportProgress(qint64 i_position, int i_bytesPerSecond) {
    {
        const QMutexLocker l_lock(&m_progressMutex);
        m_position = i_position;
        m_bytesPerSecond = i_bytesPerSecond;
        if (m_noticeInFlight) {
            return;
        }
        m_noticeInFlight = true;
    }
    QMetaObject::invokeMethod(this, &TransferThread::OnNotice, Qt::QueuedConnection);
}

void TransferThread::OnNotice() {
    const qint64 l_wait = m_sinceNotice.isValid() ? kNoticeSpacing.count() - m_sinceNotice.elapsed() : 0;
    if (l_wait > 0) {
        m_spacing.start(static_cast<int>(l_wait));
    } else {
        DeliverProgress();
    }
}

void TransferThread::DeliverProgress() {
    qint64 l_position = 0;
    int l_bytesPerSecond = 0;
    {
        const QMutexLocker l_lock(&m_progressMutex);
        l_position = m_position;
        l_bytesPerSecond = m_bytesPerSecond;
        m_noticeInFlight = false;
    }
    m_sinceNotice.start();
    EmitProgress(l_position, l_bytesPerSecond);
}

void TransferThread::OnEnd(bool i_success) {
    if (m_spacing.isActive()) {
        m_spacing.stop();
        DeliverProgress();
    }
    EmitEnd(i_success);
}
