#include "ui/add_user_dialog.h"

#include "net/server.h"
#include "store/data.h"
#include "ui/user_list_name_entry.h"

#include <QAccessible>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

AddUserDialog::AddUserDialog(QWidget* ip_parent) : QDialog(ip_parent) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Add User"));
    BuildLayout();
    connect(gp_server, &Server::AddUserResponse, this, &AddUserDialog::OnAddUserResponse);
}

void AddUserDialog::BuildLayout() {
    mp_userNameEdit = new QLineEdit;
    mp_userNameEdit->setObjectName(QStringLiteral("userNameEdit"));
    mp_statusEdit = new QLineEdit;
    mp_statusEdit->setObjectName(QStringLiteral("statusEdit"));
    mp_statusEdit->setReadOnly(true);
    mp_statusEdit->setFrame(false);
    mp_statusEdit->setFocusPolicy(Qt::ClickFocus);
    mp_statusEdit->setAccessibleName(tr("Status"));
    QPalette l_palette = mp_statusEdit->palette();
    l_palette.setBrush(QPalette::Base, Qt::transparent); // words, not a field to fill in
    mp_statusEdit->setPalette(l_palette);

    QDialogButtonBox* const lp_buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    lp_buttons->button(QDialogButtonBox::Close)->setAutoDefault(false);
    mp_addFriendButton = lp_buttons->addButton(tr("Add User"), QDialogButtonBox::ActionRole);
    mp_addFriendButton->setObjectName(QStringLiteral("addFriendButton"));
    mp_addFriendButton->setDefault(true);

    QFormLayout* const lp_form = new QFormLayout;
    lp_form->addRow(tr("User name:"), mp_userNameEdit);
    QVBoxLayout* const lp_layout = new QVBoxLayout(this);
    lp_layout->addLayout(lp_form);
    lp_layout->addWidget(mp_statusEdit);
    lp_layout->addStretch();
    lp_layout->addWidget(lp_buttons);
    resize(360, sizeHint().height());

    connect(mp_addFriendButton, &QPushButton::clicked, this, &AddUserDialog::OnAddUserClicked);
    connect(lp_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void AddUserDialog::ShowStatus(const QString& i_sentence) {
    mp_statusEdit->setText(i_sentence);
    QAccessibleEvent l_news(mp_statusEdit, QAccessible::Alert); // read out, although the focus is elsewhere
    QAccessible::updateAccessibility(&l_news);
}

void AddUserDialog::Wait(bool i_waits) {
    mp_userNameEdit->setReadOnly(i_waits);
    mp_addFriendButton->setEnabled(!i_waits);
}

void AddUserDialog::OnAddUserClicked() {
    const std::string l_name = TypedName(mp_userNameEdit);
    if (l_name.empty()) {
        ShowStatus(tr("User name must not be empty."));
        return;
    }
    if (!gp_server->IsConnected()) {
        ShowStatus(tr("Must be online to add a user to your list."));
        return;
    }
    const ItemPtr l_user = d.GetType("user")->HasItem(l_name);
    if (l_user && l_user.IsConnected("in_user_list")) {
        ShowStatus(tr("User already in list."));
        return;
    }
    ShowStatus(tr("Adding user..."));
    Wait(true);
    m_pendingUser = l_name;
    gp_server->AddUser(l_name);
}

// Answers come for every user that any part of the program asks about.
void AddUserDialog::OnAddUserResponse(const std::string& i_user, bool i_added) {
    if (m_pendingUser.empty() || i_user != m_pendingUser) {
        return;
    }
    m_pendingUser.clear();
    Wait(false);
    if (i_added) {
        d.GetType("user")->GetItem(i_user)->NewItem("in_user_list");
        ShowStatus(tr("User added to list."));
        mp_userNameEdit->selectAll(); // the next name replaces this one
    } else {
        ShowStatus(tr("User name does not exist."));
    }
}
