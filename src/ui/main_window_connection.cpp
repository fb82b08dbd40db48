// The session with the server, as it shows in menu, icon and boxes. The status bar's words are StatusWatch's.
#include "ui/main_window.h"

#include "net/server.h"
#include "ui/icon.h"
#include "ui/main_window_layout.h"
#include "ui/message_box.h"
#include "ui/status_watch.h"

#include <QAction>
#include <QApplication>

namespace {

constexpr std::string_view c_wrongPassword = "INVALIDPASS";
// The reason that the session itself gives when there was no answer at all; it then goes on trying.
constexpr std::string_view c_noAnswer = "socket error";

} // namespace

void MainWindow::OnConnectTriggered() {
    gp_server->Connect();
}

void MainWindow::OnDisconnectTriggered() {
    mp_statusWatch->ExpectDisconnection();
    gp_server->Disconnect();
}

void MainWindow::OnConnecting() {
    mp_layout->actionConnect->setEnabled(false);
    mp_layout->actionDisconnect->setEnabled(false);
}

void MainWindow::OnConnected() {
    mp_layout->actionConnect->setEnabled(false);
    mp_layout->actionDisconnect->setEnabled(true);
    ResetApplicationIcon();
    gp_server->GetRoomList();
}

void MainWindow::OnDisconnected() {
    mp_layout->actionConnect->setEnabled(true);
    mp_layout->actionDisconnect->setEnabled(false);
    ResetApplicationIcon();
}

// A refusal ends the attempt without a Disconnected signal, and the user may want to try again with other words.
void MainWindow::OnConnectionFailed(std::string i_reason) {
    if (i_reason == c_noAnswer) {
        return;
    }
    mp_layout->actionConnect->setEnabled(true);
    if (i_reason == c_wrongPassword) {
        OpenMessage(this, tr("Login Failure: Wrong Password"),
                    tr("Login failed. The password you supplied does not match your username. Please change your login "
                       "settings in the Options tab and try reconnecting."));
    }
}

void MainWindow::SetApplicationIcon(QString i_resource) {
    const QIcon l_icon = LoadIcon(i_resource);
    QApplication::setWindowIcon(l_icon);
    setWindowIcon(l_icon);
}

void MainWindow::ResetApplicationIcon() {
    SetApplicationIcon(gp_server->IsConnected() ? QStringLiteral(":/icons/online_icon")
                                                : QStringLiteral(":/icons/offline_icon"));
}

void MainWindow::RaiseWindow() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    raise();
    activateWindow();
}
