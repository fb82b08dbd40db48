#include "ui/user_list_ignore_dialog.h"

#include "ui/empty_list_hint.h"
#include "ui/ignore_list.h"
#include "ui/row_name.h"
#include "ui/user_list_name_entry.h"
#include "ui/user_list_name_rows.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include <set>
#include <vector>

IgnoredUsersDialog::IgnoredUsersDialog(QWidget* ip_parent) : QDialog(ip_parent) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Ignored Users"));
    BuildLayout();
    ShowUsers();
    Type* const lp_setting = d.GetType("global");
    Type* const lp_value = d.GetType("global_value");
    d.AddConnectionEventHandler(lp_setting, lp_value, MakeHandler(this, &IgnoredUsersDialog::OnSettingChanged));
    d.AddDisconnectionEventHandler(lp_setting, lp_value, MakeHandler(this, &IgnoredUsersDialog::OnSettingChanged));
}

void IgnoredUsersDialog::BuildLayout() {
    mp_ignoredUsersList = new QListWidget;
    mp_ignoredUsersList->setObjectName(QStringLiteral("ignoredUsersList"));
    mp_ignoredUsersList->setSelectionMode(QAbstractItemView::ExtendedSelection);
    PrepareNameList(mp_ignoredUsersList);
    new EmptyListHint(mp_ignoredUsersList, tr("Nobody is ignored."));
    QLabel* const lp_label = new QLabel(tr("What these users &say is not shown and raises no alert:"));
    lp_label->setBuddy(mp_ignoredUsersList);
    mp_ignoredUsersList->setAccessibleName(tr("Ignored users"));
    lp_label->setWordWrap(true);

    QDialogButtonBox* const lp_buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    mp_stopIgnoringButton = lp_buttons->addButton(tr("Stop Ignoring"), QDialogButtonBox::ActionRole);
    mp_stopIgnoringButton->setObjectName(QStringLiteral("stopIgnoringButton"));
    mp_stopIgnoringButton->setAutoDefault(false);
    NameEntry* const lp_newUser =
        new NameEntry(QStringLiteral("ignoreEdit"), tr("Name of a user"), QStringLiteral("ignoreButton"),
                      tr("Ignore User"), lp_buttons->button(QDialogButtonBox::Close));

    QVBoxLayout* const lp_layout = new QVBoxLayout(this);
    lp_layout->addWidget(lp_label);
    lp_layout->addWidget(mp_ignoredUsersList);
    lp_layout->addWidget(lp_newUser);
    lp_layout->addWidget(lp_buttons);
    resize(380, 320);
    OnSelectionChanged();

    connect(mp_ignoredUsersList, &QListWidget::itemSelectionChanged, this, &IgnoredUsersDialog::OnSelectionChanged);
    connect(mp_stopIgnoringButton, &QPushButton::clicked, this, &IgnoredUsersDialog::OnStopIgnoringClicked);
    connect(lp_newUser, &NameEntry::NameEntered, this, &IgnoredUsersDialog::OnNameEntered);
    connect(lp_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

// Takes out the rows of those who are no longer ignored and adds the missing ones, so that a selection stays.
void IgnoredUsersDialog::ShowUsers() {
    const std::vector<std::string> l_users = IgnoredUsers();
    std::set<std::string> l_missing(l_users.begin(), l_users.end());
    for (int l_row = mp_ignoredUsersList->count() - 1; l_row >= 0; --l_row) {
        if (l_missing.erase(RowName(*mp_ignoredUsersList->item(l_row))) == 0) {
            delete mp_ignoredUsersList->takeItem(l_row);
        }
    }
    for (const std::string& l_user : l_missing) {
        AddNameRow(mp_ignoredUsersList, l_user);
    }
}

void IgnoredUsersDialog::OnSettingChanged(ConnectionInfo& /*i_info*/) {
    ShowUsers();
}

void IgnoredUsersDialog::OnNameEntered(const std::string& i_name) {
    SetIgnored(i_name, true);
    mp_ignoredUsersList->scrollToItem(FindNameRow(mp_ignoredUsersList, i_name));
}

void IgnoredUsersDialog::OnStopIgnoringClicked() {
    std::vector<std::string> l_users;
    for (const QListWidgetItem* lp_row : mp_ignoredUsersList->selectedItems()) {
        l_users.push_back(RowName(*lp_row));
    }
    for (const std::string& l_user : l_users) {
        SetIgnored(l_user, false);
    }
}

void IgnoredUsersDialog::OnSelectionChanged() {
    mp_stopIgnoringButton->setEnabled(!mp_ignoredUsersList->selectedItems().isEmpty());
}
