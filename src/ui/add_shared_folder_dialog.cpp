#include "ui/add_shared_folder_dialog.h"

#include "app/text.h"
#include "store/data.h"
#include "ui/dialog_parts.h"
#include "ui/empty_list_hint.h"
#include "ui/folder_chooser.h"
#include "ui/row_name.h"
#include "ui/user_list_name_rows.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

AddSharedFolderDialog::AddSharedFolderDialog(QWidget* ip_parent) : QDialog(ip_parent) {
    setWindowTitle(tr("Add Shared Folder"));
    setAttribute(Qt::WA_DeleteOnClose);
    BuildLayout();
    for (const Item* lp_group : g("user_list_group")) {
        QListWidgetItem* const lp_row = AddNameRow(mp_groupsListWidget, lp_group->AsView());
        lp_row->setFlags(lp_row->flags() | Qt::ItemIsUserCheckable);
        lp_row->setCheckState(Qt::Unchecked);
    }
    connect(mp_everyoneCheckBox, &QCheckBox::toggled, this, &AddSharedFolderDialog::OnEveryoneToggled);
    connect(mp_userListCheckBox, &QCheckBox::toggled, this, &AddSharedFolderDialog::OnUserListToggled);
}

void AddSharedFolderDialog::BuildLayout() {
    mp_selectedFolderEdit = NewLineEdit("selectedFolderEdit", QString());
    mp_selectedFolderEdit->setAccessibleName(tr("Folder to share"));
    QPushButton* const lp_selectButton = new QPushButton(tr("Select &Folder"));
    lp_selectButton->setObjectName(QStringLiteral("pushButton"));
    lp_selectButton->setAutoDefault(false);
    connect(lp_selectButton, &QPushButton::clicked, this, &AddSharedFolderDialog::OnSelectFolderClicked);

    mp_everyoneCheckBox = new QCheckBox(tr("Folder accessible to everyone"));
    mp_everyoneCheckBox->setObjectName(QStringLiteral("everyoneCheckBox"));
    mp_everyoneCheckBox->setChecked(true);
    mp_userListCheckBox = new QCheckBox(tr("Folder accessible to all user list users"));
    mp_userListCheckBox->setObjectName(QStringLiteral("userListCheckBox"));
    mp_userListCheckBox->setChecked(true);
    mp_userListCheckBox->setEnabled(false);
    mp_groupsListWidget = new QListWidget;
    mp_groupsListWidget->setObjectName(QStringLiteral("groupsListWidget"));
    mp_groupsListWidget->setEnabled(false);
    PrepareNameList(mp_groupsListWidget);
    new EmptyListHint(mp_groupsListWidget, tr("There are no groups yet. They are made where a user's groups are set."));
    QLabel* const lp_groupsLabel = new QLabel(tr("Folder accessible to specific user list groups:"));
    lp_groupsLabel->setBuddy(mp_groupsListWidget);
    mp_groupsListWidget->setAccessibleName(lp_groupsLabel->text());

    QHBoxLayout* const lp_folder = new QHBoxLayout;
    lp_folder->addWidget(mp_selectedFolderEdit, 1);
    lp_folder->addWidget(lp_selectButton);
    QVBoxLayout* const lp_layout = new QVBoxLayout(this);
    lp_layout->addLayout(lp_folder);
    lp_layout->addWidget(mp_everyoneCheckBox);
    lp_layout->addWidget(mp_userListCheckBox);
    lp_layout->addWidget(lp_groupsLabel);
    lp_layout->addWidget(mp_groupsListWidget, 1);
    lp_layout->addWidget(NewButtonBox(this));
}

void AddSharedFolderDialog::OnSelectFolderClicked() {
    ChooseFolder(this, tr("Select Folder to Share"), mp_selectedFolderEdit->text(),
                 [this](const QString& i_path) { mp_selectedFolderEdit->setText(i_path); });
}

void AddSharedFolderDialog::OnEveryoneToggled(bool i_checked) {
    mp_userListCheckBox->setEnabled(!i_checked);
    if (i_checked) {
        mp_userListCheckBox->setChecked(true);
    }
    mp_groupsListWidget->setEnabled(!i_checked && !mp_userListCheckBox->isChecked());
}

void AddSharedFolderDialog::OnUserListToggled(bool i_checked) {
    mp_groupsListWidget->setEnabled(!i_checked);
}

// The folder comes first and its rights after it: the walk, which the new item starts, ends before anyone can ask.
void AddSharedFolderDialog::accept() {
    const std::string l_path = ToUtf8(mp_selectedFolderEdit->text());
    if (l_path.empty()) {
        return;
    }
    const ItemPtr l_folder = d.GetType("shared_folder")->NewItem(l_path);
    if (mp_everyoneCheckBox->isChecked()) {
        l_folder.NewItem("shared_public");
    } else if (mp_userListCheckBox->isChecked()) {
        l_folder.NewItem("shared_userlist");
    } else {
        for (int l_row = 0; l_row < mp_groupsListWidget->count(); ++l_row) {
            const QListWidgetItem& l_group = *mp_groupsListWidget->item(l_row);
            if (l_group.checkState() == Qt::Checked) {
                l_folder.Connect(d.GetType("user_list_group")->GetItem(RowName(l_group)));
            }
        }
    }
    QDialog::accept();
}
