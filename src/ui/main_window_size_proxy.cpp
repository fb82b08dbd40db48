#include "ui/main_window_size_proxy.h"

namespace {

constexpr qint64 c_burst = 300; // ms: changes closer to each other belong together

} // namespace

void MainWindow::SizeProxy::SetPosition(int i_x, int i_y) {
    mp_window->setGeometry(i_x, i_y, GetWidth(), GetHeight());
}

void MainWindow::SizeProxy::SetSize(int i_width, int i_height) {
    mp_window->setGeometry(GetX(), GetY(), i_width, i_height);
}

bool MainWindow::SizeProxy::IsRemembered() const {
    return !(mp_window->windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen | Qt::WindowMinimized));
}

void MainWindow::SizeProxy::NoteGeometry() {
    if (!m_sinceReport.isValid() || m_sinceReport.hasExpired(c_burst)) {
        m_settled = m_latest;
    }
    m_latest = mp_window->geometry();
    m_sinceReport.start();
}

void MainWindow::SizeProxy::OnMoved() {
    if (IsRemembered()) {
        NoteGeometry();
        Q_EMIT WindowMoved(GetX(), GetY());
    }
}

void MainWindow::SizeProxy::OnResized() {
    if (IsRemembered()) {
        NoteGeometry();
        Q_EMIT WindowResized(GetWidth(), GetHeight());
    }
}

// Some window managers give the window its maximised size before they say that it is maximised: then that size has
// been reported a moment ago, and what was before it is to be remembered.
void MainWindow::SizeProxy::OnStateChanged() {
    if (IsRemembered() || !m_settled.isValid() || !m_sinceReport.isValid() || m_sinceReport.hasExpired(c_burst)) {
        return;
    }
    m_latest = m_settled;
    Q_EMIT WindowMoved(m_settled.x(), m_settled.y());
    Q_EMIT WindowResized(m_settled.width(), m_settled.height());
}
