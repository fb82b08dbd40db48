#include "app/instance_lock.h"

#include "app/text.h"

#include <QLocalSocket>

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

InstanceLock::InstanceLock(const std::string& i_folder)
    : m_lockPath(i_folder + "/.Tidewell.lock"), m_socketPath(ToQString(i_folder + "/.Tidewell.socket")) {
    Lock();
    if (m_descriptor >= 0) {
        Listen();
    }
}

// The file stays: a process that has just opened it would otherwise hold a lock on a file without a name.
InstanceLock::~InstanceLock() {
    m_server.close();
    if (m_descriptor >= 0) {
        close(m_descriptor);
    }
}

void InstanceLock::Lock() {
    constexpr mode_t l_ownerOnly = 0600;
    m_descriptor = open(m_lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, l_ownerOnly);
    if (m_descriptor < 0) {
        return;
    }
    if (flock(m_descriptor, LOCK_EX | LOCK_NB) != 0) {
        m_isTaken = errno == EWOULDBLOCK; // else the file system knows no locks
        close(m_descriptor);
        m_descriptor = -1;
    }
}

// A socket file that is there is that of a process which has died.
void InstanceLock::Listen() {
    QLocalServer::removeServer(m_socketPath);
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&m_server, &QLocalServer::newConnection, this, &InstanceLock::OnCall);
    m_server.listen(m_socketPath);
}

void InstanceLock::OnCall() {
    while (QLocalSocket* const lp_socket = m_server.nextPendingConnection()) {
        lp_socket->abort();
        lp_socket->deleteLater();
    }
    Q_EMIT Called();
}

// To be connected is all that there is to say. The holder may still be starting: the call waits until it looks.
bool InstanceLock::CallHolder() const {
    constexpr int l_patience = 5000; // milliseconds
    QLocalSocket l_socket;
    l_socket.connectToServer(m_socketPath);
    return l_socket.waitForConnected(l_patience);
}
