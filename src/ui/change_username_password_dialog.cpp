#include "ui/change_username_password_dialog.h"

#include "app/settings.h"
#include "app/text.h"
#include "store/value.h"
#include "ui/dialog_parts.h"

#include <QFormLayout>
#include <QLineEdit>

ChangeUsernamePasswordDialog::ChangeUsernamePasswordDialog(QWidget* ip_parent) : QDialog(ip_parent) {
    setWindowTitle(tr("Change Username/Password"));
    setAttribute(Qt::WA_DeleteOnClose);

    mp_usernameEdit = NewLineEdit("usernameEdit", ToQString(SettingText("username")));
    mp_passwordEdit = NewLineEdit("passwordEdit", ToQString(SettingText("password")));
    mp_passwordEdit->setEchoMode(QLineEdit::Password);

    QFormLayout* const lp_layout = new QFormLayout(this);
    lp_layout->addRow(tr("&Username"), mp_usernameEdit);
    lp_layout->addRow(tr("&Password"), mp_passwordEdit);
    lp_layout->addRow(NewButtonBox(this));
}

void ChangeUsernamePasswordDialog::accept() {
    QDialog::accept();
    SetSetting("username", ToUtf8(mp_usernameEdit->text()));
    SetSetting("password", ToUtf8(mp_passwordEdit->text()));
}
