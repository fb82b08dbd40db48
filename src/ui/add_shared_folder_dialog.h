// Asks for a folder and for whom it is open, and shares it. The walk over the folder runs inside accept().
#pragma once

#include <QDialog>

class QCheckBox;
class QLineEdit;
class QListWidget;

class AddSharedFolderDialog : public QDialog {
    Q_OBJECT

public:
    // Frees itself when it is closed.
    explicit AddSharedFolderDialog(QWidget* ip_parent);

    // Stays open while there is no path.
    void accept() override;

private:
    void BuildLayout();
    void OnSelectFolderClicked();
    void OnEveryoneToggled(bool i_checked);
    void OnUserListToggled(bool i_checked);

    QLineEdit* mp_selectedFolderEdit = nullptr;
    QCheckBox* mp_everyoneCheckBox = nullptr;
    QCheckBox* mp_userListCheckBox = nullptr;
    QListWidget* mp_groupsListWidget = nullptr;
};
