#include "ui/change_listening_port_dialog.h"

#include "app/settings.h"
#include "app/text.h"
#include "net/limits.h"
#include "store/value.h"
#include "ui/dialog_parts.h"
#include "ui/message_box.h"

#include <QFormLayout>
#include <QLineEdit>

ChangeListeningPortDialog::ChangeListeningPortDialog(QWidget* ip_parent) : QDialog(ip_parent) {
    setWindowTitle(tr("Change Listening Port"));
    setAttribute(Qt::WA_DeleteOnClose);

    mp_portEdit = NewLineEdit("portEdit", QString());
    mp_portEdit->setInputMask(QStringLiteral("D9999"));
    mp_portEdit->setText(ToQString(SettingText("listening_port")));

    QFormLayout* const lp_layout = new QFormLayout(this);
    lp_layout->addRow(tr("&Listening port"), mp_portEdit);
    lp_layout->addRow(NewButtonBox(this));
}

void ChangeListeningPortDialog::accept() {
    const int l_port = mp_portEdit->text().toInt();
    if (!limits::IsConnectablePort(l_port)) {
        OpenMessage(this, tr("Invalid Port Number"), tr("Port number must be in the range of 1 to 65535."));
        return;
    }
    if (l_port == SettingNumber("listening_port")) {
        OpenMessage(this, tr("Port Number Not Changed"), tr("Port number has not been changed."));
        return;
    }
    QDialog::accept();
    SetSetting("new_listening_port", l_port);
    OpenMessage(parentWidget(), tr("Change to Listening Port Pending"),
                tr("Changes to the listening port will take effect after a client restart."));
}
