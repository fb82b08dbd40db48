#include "ui/user_groups_dialog.h"

#include "ui/dialog_title.h"
#include "ui/display_text.h"
#include "ui/empty_list_hint.h"
#include "ui/row_name.h"
#include "ui/user_list_name_entry.h"
#include "ui/user_list_name_rows.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

UserGroupsDialog::UserGroupsDialog(std::string i_user, QWidget* ip_parent)
    : QDialog(ip_parent), m_user(std::move(i_user)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(LiteralTitle(tr("User Groups for [%1]").arg(LabelText(m_user))));
    BuildLayout();
    for (Item* lp_group : g("user_list_group")) {
        AddRow(lp_group);
    }
    WatchStore();
    connect(mp_groupListWidget, &QListWidget::itemChanged, this, &UserGroupsDialog::OnGroupItemChanged);
}

void UserGroupsDialog::BuildLayout() {
    mp_groupListWidget = new QListWidget;
    mp_groupListWidget->setObjectName(QStringLiteral("groupListWidget"));
    PrepareNameList(mp_groupListWidget);
    new EmptyListHint(mp_groupListWidget, tr("There are no groups yet. Name the first one below."));
    QLabel* const lp_listLabel = new QLabel(tr("&Member of these groups:"));
    lp_listLabel->setBuddy(mp_groupListWidget);
    mp_groupListWidget->setAccessibleName(tr("Groups of the user"));

    QDialogButtonBox* const lp_buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    NameEntry* const lp_newGroup =
        new NameEntry(QStringLiteral("newGroupEdit"), tr("Name of a new group"), QStringLiteral("newGroupButton"),
                      tr("Create New Group"), lp_buttons->button(QDialogButtonBox::Close));

    QVBoxLayout* const lp_layout = new QVBoxLayout(this);
    lp_layout->addWidget(lp_listLabel);
    lp_layout->addWidget(mp_groupListWidget);
    lp_layout->addWidget(lp_newGroup);
    lp_layout->addWidget(lp_buttons);
    resize(380, 320);

    connect(lp_newGroup, &NameEntry::NameEntered, this, &UserGroupsDialog::OnNewGroupEntered);
    connect(lp_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void UserGroupsDialog::WatchStore() {
    Type* const lp_entry = d.GetType("in_user_list");
    Type* const lp_group = d.GetType("user_list_group");
    lp_group->m_itemAdded.AddHandler(MakeHandler(this, &UserGroupsDialog::OnUserGroupAdded));
    d.AddConnectionEventHandler(lp_entry, lp_group, MakeHandler(this, &UserGroupsDialog::OnMembershipChanged));
    d.AddDisconnectionEventHandler(lp_entry, lp_group, MakeHandler(this, &UserGroupsDialog::OnMembershipChanged));
    d.AddDisconnectionEventHandler(d.GetType("user"), lp_entry,
                                   MakeHandler(this, &UserGroupsDialog::OnUserRemovedFromList));
}

void UserGroupsDialog::AddRow(Item* ip_group) {
    const QSignalBlocker l_silence(mp_groupListWidget); // a fill is no change by the user
    QListWidgetItem* const lp_row = AddNameRow(mp_groupListWidget, ip_group->AsView());
    lp_row->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    lp_row->setCheckState(CheckStateOf(ip_group));
}

ItemPtr UserGroupsDialog::Entry() const {
    return d.GetType("user")->HasItem(m_user)["in_user_list"];
}

Qt::CheckState UserGroupsDialog::CheckStateOf(ItemPtr i_group) const {
    const ItemPtr l_entry = Entry();
    return l_entry && l_entry.IsConnected(i_group) ? Qt::Checked : Qt::Unchecked;
}

void UserGroupsDialog::OnUserGroupAdded(Item* ip_group) {
    AddRow(ip_group);
}

// Also by a second dialog of the same user.
void UserGroupsDialog::OnMembershipChanged(ConnectionInfo& i_info) {
    if (i_info.m_itemFrom != Entry().Get()) {
        return;
    }
    if (QListWidgetItem* const lp_row = FindNameRow(mp_groupListWidget, i_info.m_itemTo->AsView())) {
        const QSignalBlocker l_silence(mp_groupListWidget);
        lp_row->setCheckState(CheckStateOf(i_info.m_itemTo));
        mp_groupListWidget->viewport()->update();
    }
}

void UserGroupsDialog::OnUserRemovedFromList(ConnectionInfo& i_info) {
    if (i_info.m_itemFrom->AsView() == m_user) {
        close();
    }
}

void UserGroupsDialog::OnNewGroupEntered(const std::string& i_name) {
    d.GetType("user_list_group")->GetItem(i_name);
    mp_groupListWidget->setCurrentItem(FindNameRow(mp_groupListWidget, i_name));
}

void UserGroupsDialog::OnGroupItemChanged(QListWidgetItem* ip_row) {
    const Qt::CheckState l_state = ip_row->checkState();
    const ItemPtr l_entry = Entry();
    const std::string l_name = RowName(*ip_row);
    if (l_state == Qt::PartiallyChecked || l_name.empty() || !l_entry) {
        return;
    }
    const ItemPtr l_group = d.GetType("user_list_group")->GetItem(l_name);
    const bool l_isMember = l_entry.IsConnected(l_group);
    if (l_state == Qt::Checked && !l_isMember) {
        l_entry.Connect(l_group);
    } else if (l_state == Qt::Unchecked && l_isMember) {
        l_entry.Disconnect(l_group);
    }
}
