#include "ui/change_server_dialog.h"

#include "app/settings.h"
#include "app/text.h"
#include "net/limits.h"
#include "net/server.h"
#include "store/value.h"
#include "ui/dialog_parts.h"
#include "ui/message_box.h"

#include <QFormLayout>
#include <QLineEdit>

ChangeServerDialog::ChangeServerDialog(QWidget* ip_parent) : QDialog(ip_parent) {
    setWindowTitle(tr("Change Server"));
    setAttribute(Qt::WA_DeleteOnClose);

    mp_hostEdit = NewLineEdit("hostEdit", ToQString(gp_server->Host()));
    mp_portEdit = NewLineEdit("portEdit", QString());
    mp_portEdit->setInputMask(QStringLiteral("D9999"));
    mp_portEdit->setText(QString::number(gp_server->Port()));

    QFormLayout* const lp_layout = new QFormLayout(this);
    lp_layout->addRow(tr("&Host"), mp_hostEdit);
    lp_layout->addRow(tr("&Port"), mp_portEdit);
    lp_layout->addRow(NewButtonBox(this));
}

void ChangeServerDialog::accept() {
    const QString l_host = mp_hostEdit->text().trimmed();
    const int l_port = mp_portEdit->text().toInt();
    if (l_host.isEmpty()) {
        OpenMessage(this, tr("Host Missing"), tr("Please enter the name or the address of the server."));
        return;
    }
    if (!limits::IsConnectablePort(l_port)) {
        OpenMessage(this, tr("Invalid Port Number"), tr("Port number must be in the range of 1 to 65535."));
        return;
    }
    QDialog::accept();
    SetSetting("server_host", ToUtf8(l_host));
    SetSetting("server_port", l_port);
}
