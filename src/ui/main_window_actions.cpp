// What the user does, and the state of the connection in words, menu and icon.
#include "ui/main_window.h"

#include "app/settings.h"
#include "net/server.h"
#include "peer/peer_messenger.h"
#include "ui/display_text.h"
#include "ui/main_window_layout.h"
#include "ui/status_bar.h"

#include <QAction>
#include <QApplication>
#include <QIcon>
#include <QMessageBox>

namespace {

constexpr std::string_view c_wrongPassword = "INVALIDPASS";
// The reason that the session itself gives when there was no answer at all; it then goes on trying.
constexpr std::string_view c_noAnswer = "socket error";

} // namespace

void MainWindow::OnConnectTriggered() {
    gp_server->Connect();
}

void MainWindow::OnDisconnectTriggered() {
    m_disconnectedText = tr("Not connected");
    gp_server->Disconnect();
}

void MainWindow::OnUPnPCheckboxToggled(bool i_checked) {
    SetSetting("use_upnp", i_checked ? "yes" : "no");
}

void MainWindow::OnConnecting() {
    mp_layout->actionConnect->setEnabled(false);
    mp_layout->actionDisconnect->setEnabled(false);
    m_disconnectedText = tr("The server does not answer; trying again every half minute");
    mp_layout->statusBar->ShowConnection(tr("Connecting…"));
}

void MainWindow::OnConnected() {
    mp_layout->actionConnect->setEnabled(false);
    mp_layout->actionDisconnect->setEnabled(true);
    ResetApplicationIcon();
    m_disconnectedText = tr("Connection lost; trying again every half minute");
    mp_layout->statusBar->ShowConnection(tr("Connected as %1").arg(LabelText(SettingText("username"))));
}

void MainWindow::OnDisconnected() {
    mp_layout->actionConnect->setEnabled(true);
    mp_layout->actionDisconnect->setEnabled(false);
    ResetApplicationIcon();
    mp_layout->statusBar->ShowConnection(m_disconnectedText);
}

// A refusal ends the attempt without a Disconnected signal, and the user may want to try again with other words.
void MainWindow::OnConnectionFailed(std::string i_reason) {
    if (i_reason == c_noAnswer) {
        return;
    }
    const bool l_wrongPassword = i_reason == c_wrongPassword;
    m_disconnectedText = tr("Login refused: %1").arg(l_wrongPassword ? tr("wrong password") : LabelText(i_reason));
    mp_layout->actionConnect->setEnabled(true);
    mp_layout->statusBar->ShowConnection(m_disconnectedText);
    if (l_wrongPassword) {
        OpenMessage(tr("Login Failure: Wrong Password"),
                    tr("Login failed. The password you supplied does not match your username. Please change your login "
                       "settings in the Options tab and try reconnecting."));
    }
}

void MainWindow::OnListenFinished() {
    const std::string l_error = peerMessenger->ListenError();
    mp_layout->statusBar->ShowListening(l_error.empty() ? tr("Listening on port %1").arg(peerMessenger->ListeningPort())
                                                        : CellText(l_error));
}

void MainWindow::EveryFiveMinutes() {
    SaveStore();
}

void MainWindow::SetApplicationIcon(QString i_resource) {
    const QIcon l_icon(i_resource);
    QApplication::setWindowIcon(l_icon);
    setWindowIcon(l_icon);
}

void MainWindow::ResetApplicationIcon() {
    SetApplicationIcon(gp_server->IsConnected() ? QStringLiteral(":/icons/online_icon")
                                                : QStringLiteral(":/icons/offline_icon"));
}

void MainWindow::OpenMessage(const QString& i_title, const QString& i_text) {
    QMessageBox* const lp_box = new QMessageBox(QMessageBox::Information, i_title, i_text, QMessageBox::Ok, this);
    lp_box->setAttribute(Qt::WA_DeleteOnClose);
    lp_box->setTextFormat(Qt::PlainText);
    lp_box->open();
}
