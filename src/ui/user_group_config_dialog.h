#pragma once

#include "store/data.h"

#include <QDialog>

#include <string>

class QGroupBox;
class QListWidget;
class QListWidgetItem;
class QSpinBox;

// The download priorities of the groups. Every change counts at once, for the order of the next new upload. One at a
// time: it stands in the global until it is deleted, which it sees to when it closes.
class UserGroupConfigDialog : public QDialog, public DataHandler {
    Q_OBJECT

public:
    explicit UserGroupConfigDialog(QWidget* ip_parent);
    ~UserGroupConfigDialog() override;

private:
    void BuildLayout();
    QWidget* MakeGroupBox();

    void OnUserGroupAdded(Item* ip_group);
    void OnUserGroupRemoved(Item* ip_group);
    void OnCurrentGroupItemChanged(QListWidgetItem* ip_current, QListWidgetItem* ip_previous);
    void OnPrioritySpinValueChanged(int i_value);

    QListWidget* mp_groupList = nullptr;
    QGroupBox* mp_groupBox = nullptr;
    QSpinBox* mp_prioritySpinBox = nullptr;
};

extern UserGroupConfigDialog* userGroupConfigDialog;
