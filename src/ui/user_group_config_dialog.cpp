#include "ui/user_group_config_dialog.h"

#include "ui/display_text.h"
#include "ui/empty_list_hint.h"
#include "ui/row_name.h"
#include "ui/user_list_name_rows.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QVBoxLayout>

#include <algorithm>

UserGroupConfigDialog* userGroupConfigDialog = nullptr;

namespace {

constexpr int c_listWidth = 170;
constexpr int c_boxWidth = 340;
constexpr int c_titleWidth = c_boxWidth - 20;

// A title widens its box, at the cost of the list beside it.
QString BoxTitle(const QGroupBox* ip_box, std::string_view i_group) {
    return ip_box->fontMetrics()
        .elidedText(LabelText(i_group), Qt::ElideRight, c_titleWidth)
        .replace(QLatin1Char('&'), QLatin1String("&&"));
}

} // namespace

UserGroupConfigDialog::UserGroupConfigDialog(QWidget* ip_parent) : QDialog(ip_parent) {
    userGroupConfigDialog = this;
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Configure User Groups"));
    BuildLayout();

    Type* const lp_groups = d.GetType("user_list_group");
    lp_groups->m_itemAdded.AddHandler(MakeHandler(this, &UserGroupConfigDialog::OnUserGroupAdded));
    lp_groups->m_itemRemoved.AddHandler(MakeHandler(this, &UserGroupConfigDialog::OnUserGroupRemoved));
    for (Item* lp_group : g("user_list_group")) {
        OnUserGroupAdded(lp_group);
    }
    OnCurrentGroupItemChanged(nullptr, nullptr);
    connect(mp_groupList, &QListWidget::currentItemChanged, this, &UserGroupConfigDialog::OnCurrentGroupItemChanged);
    connect(mp_prioritySpinBox, &QSpinBox::valueChanged, this, &UserGroupConfigDialog::OnPrioritySpinValueChanged);
}

UserGroupConfigDialog::~UserGroupConfigDialog() {
    userGroupConfigDialog = nullptr;
}

void UserGroupConfigDialog::BuildLayout() {
    mp_groupList = new QListWidget;
    mp_groupList->setObjectName(QStringLiteral("groupList"));
    mp_groupList->setAccessibleName(tr("Groups"));
    mp_groupList->setMinimumWidth(c_listWidth);
    PrepareNameList(mp_groupList);
    new EmptyListHint(mp_groupList, tr("There are no groups yet. They are made where a user's groups are set."));

    QDialogButtonBox* const lp_buttons = new QDialogButtonBox(QDialogButtonBox::Close);
    lp_buttons->button(QDialogButtonBox::Close)->setDefault(true);
    connect(lp_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    QHBoxLayout* const lp_panes = new QHBoxLayout;
    lp_panes->addWidget(mp_groupList, 1);
    lp_panes->addWidget(MakeGroupBox(), 2);
    QVBoxLayout* const lp_layout = new QVBoxLayout(this);
    lp_layout->addLayout(lp_panes);
    lp_layout->addWidget(lp_buttons);
    resize(560, 340);
}

QWidget* UserGroupConfigDialog::MakeGroupBox() {
    mp_prioritySpinBox = new QSpinBox;
    mp_prioritySpinBox->setObjectName(QStringLiteral("prioritySpinBox"));
    QLabel* const lp_explanation = new QLabel(
        tr("Defines the download priority of users belonging to this group. Users who belong to more than one group "
           "will be prioritized by their highest-ranked group.\n\nA priority of 0 will not affect the order of "
           "downloads by users of this group relative to other downloads. A priority of 1 or more will order downloads "
           "by users of this group ahead of all other downloads, except for ones with a higher priority."));
    lp_explanation->setTextFormat(Qt::PlainText);
    lp_explanation->setWordWrap(true);

    mp_groupBox = new QGroupBox;
    mp_groupBox->setObjectName(QStringLiteral("groupBox"));
    mp_groupBox->setMinimumWidth(c_boxWidth);
    QFormLayout* const lp_form = new QFormLayout;
    lp_form->addRow(tr("Download Priority"), mp_prioritySpinBox);
    QVBoxLayout* const lp_layout = new QVBoxLayout(mp_groupBox);
    lp_layout->addLayout(lp_form);
    lp_layout->addWidget(lp_explanation);
    lp_layout->addStretch();
    return mp_groupBox;
}

void UserGroupConfigDialog::OnUserGroupAdded(Item* ip_group) {
    AddNameRow(mp_groupList, ip_group->AsView());
}

void UserGroupConfigDialog::OnUserGroupRemoved(Item* ip_group) {
    delete FindNameRow(mp_groupList, ip_group->AsView());
}

void UserGroupConfigDialog::OnCurrentGroupItemChanged(QListWidgetItem* ip_current, QListWidgetItem* /*ip_previous*/) {
    const QSignalBlocker l_silence(mp_prioritySpinBox); // a stored number out of its range stays as it is
    mp_prioritySpinBox->setEnabled(ip_current != nullptr);
    if (!ip_current) {
        mp_groupBox->setTitle(QString());
        mp_groupBox->setAccessibleName(tr("No group is selected"));
        return;
    }
    ip_current->setSelected(true); // also when it became the current one by the focus alone
    const std::string l_name = RowName(*ip_current);
    const ItemPtr l_priority = d.GetType("user_list_group")->HasItem(l_name)["group_download_priority"];
    mp_groupBox->setTitle(BoxTitle(mp_groupBox, l_name));
    mp_groupBox->setAccessibleName(CellText(l_name));
    const long long l_shown = std::clamp<long long>(l_priority.ToInt64().value_or(0), mp_prioritySpinBox->minimum(),
                                                    mp_prioritySpinBox->maximum());
    mp_prioritySpinBox->setValue(static_cast<int>(l_shown));
}

void UserGroupConfigDialog::OnPrioritySpinValueChanged(int i_value) {
    const QListWidgetItem* const lp_current = mp_groupList->currentItem();
    if (!lp_current) {
        return;
    }
    const ItemPtr l_group = d.GetType("user_list_group")->GetItem(RowName(*lp_current));
    if (i_value <= 0) {
        l_group.Disconnect("group_download_priority");
    } else {
        l_group.Connect(d.GetType("group_download_priority")->GetItem(i_value));
    }
}
