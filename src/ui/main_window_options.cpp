// The settings on show, and the way to their dialogs and to the store browser.
#include "ui/main_window.h"

#include "app/settings.h"
#include "net/port_forwarder.h"
#include "net/server.h"
#include "ui/change_username_password_dialog.h"
#include "ui/data_dialog.h"
#include "ui/display_text.h"
#include "ui/main_window_layout.h"
#include "ui/message_box.h"
#include "ui/status_watch.h"
#include "ui/store_keeper.h"

#include <QLineEdit>
#include <QMessageBox>
#include <QTabWidget>

void MainWindow::OpenLoginDialog() {
    ChangeUsernamePasswordDialog* const lp_dialog = new ChangeUsernamePasswordDialog(this);
    connect(lp_dialog, &QDialog::accepted, mp_statusWatch.get(), &StatusWatch::TellHowToConnect);
    lp_dialog->show();
}

// For someone who has never seen the program: a word, and then the place that it speaks of.
void MainWindow::LeadToLogin() {
    const QMessageBox* const lp_box =
        OpenMessage(this, tr("No Username"),
                    tr("You do not yet have a username set. Please set one from the Options tab and use the Connect "
                       "menu option to connect."));
    connect(lp_box, &QDialog::finished, this, [this] {
        mp_layout->tabControl->setCurrentWidget(mp_layout->optionsPage);
        mp_layout->optionsTabControl->setCurrentWidget(mp_layout->loginPage);
        OpenLoginDialog();
    });
}

void MainWindow::WatchSetting(const char* ip_key, void (MainWindow::*i_method)(Item*)) {
    PathNode* const lp_setting = new PathNode(d.GetType("global")->GetItem(ip_key));
    new PathNode(lp_setting, "global_value", Connected);
    d.AddPathEventHandler(lp_setting, MakeHandler(this, i_method));
}

void MainWindow::OnUPnPCheckboxToggled(bool i_checked) {
    SetSetting("use_upnp", i_checked ? "yes" : "no");
    if (i_checked) {
        portForwarder->Init();
    }
}

void MainWindow::OnUsernameChanged(Item* ip_setting) {
    mp_layout->usernameEdit->setText(CellText(ItemPtr(ip_setting)["global_value"].AsView()));
}

void MainWindow::ShowServer() {
    mp_layout->serverHostEdit->setText(CellText(gp_server->Host()));
    mp_layout->serverPortEdit->setText(QString::number(gp_server->Port()));
}

void MainWindow::OnServerChanged(Item*) {
    ShowServer();
}

void MainWindow::OnNewListeningPortChanged(Item* ip_setting) {
    mp_layout->listeningPortEdit->setText(CellText(ItemPtr(ip_setting)["global_value"].AsView()));
}

void MainWindow::OnShowData() {
    if (!mp_dataDialog) {
        mp_dataDialog = new DataDialog(&d, this);
        mp_dataDialog->SetSave([this] { return mp_storeKeeper->SaveNow(); });
    }
    mp_dataDialog->show();
    mp_dataDialog->raise();
    mp_dataDialog->activateWindow();
}
