#include "app/quit_signals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int c_signals[] = {SIGTERM, SIGINT, SIGHUP};
struct sigaction g_previousActions[3];
volatile std::sig_atomic_t g_writeEnd = -1;

// Runs inside the signal: only write() is allowed here. A full pipe means that the news is under way already.
void OnSignal(int) {
    const int l_error = errno;
    const char l_byte = 1;
    [[maybe_unused]] const ssize_t l_written = write(g_writeEnd, &l_byte, 1);
    errno = l_error;
}

} // namespace

QuitSignals::QuitSignals() {
    if (pipe2(m_pipeEnds, O_CLOEXEC | O_NONBLOCK) != 0) {
        return; // without descriptors the signals keep their plain meaning
    }
    mp_notifier = std::make_unique<QSocketNotifier>(m_pipeEnds[0], QSocketNotifier::Read);
    connect(mp_notifier.get(), &QSocketNotifier::activated, this, &QuitSignals::OnSignalArrived);
    g_writeEnd = m_pipeEnds[1];
    for (std::size_t l_index = 0; l_index < std::size(c_signals); ++l_index) {
        struct sigaction l_action = {};
        l_action.sa_handler = OnSignal;
        l_action.sa_flags = SA_RESTART;
        sigaction(c_signals[l_index], &l_action, &g_previousActions[l_index]);
    }
}

QuitSignals::~QuitSignals() {
    if (!mp_notifier) {
        return;
    }
    for (std::size_t l_index = 0; l_index < std::size(c_signals); ++l_index) {
        sigaction(c_signals[l_index], &g_previousActions[l_index], nullptr);
    }
    g_writeEnd = -1;
    mp_notifier.reset();
    close(m_pipeEnds[0]);
    close(m_pipeEnds[1]);
}

void QuitSignals::OnSignalArrived() {
    char l_bytes[16];
    while (read(m_pipeEnds[0], l_bytes, sizeof l_bytes) > 0) {
    }
    // exit() and not quit(): quit() first asks the windows whether they want to close, and one could decline.
    QCoreApplication::exit(0);
}
