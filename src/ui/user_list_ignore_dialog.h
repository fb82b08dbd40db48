#pragma once

#include "store/data.h"

#include <QDialog>

#include <string>

class QListWidget;
class QPushButton;

// The users whose lines and alerts are not shown. Every change counts at once; changes from elsewhere show. Frees
// itself when it closes.
class IgnoredUsersDialog : public QDialog, public DataHandler {
    Q_OBJECT

public:
    explicit IgnoredUsersDialog(QWidget* ip_parent);

private:
    void BuildLayout();
    void ShowUsers();

    void OnSettingChanged(ConnectionInfo& i_info);
    void OnNameEntered(const std::string& i_name);
    void OnStopIgnoringClicked();
    void OnSelectionChanged();

    QListWidget* mp_ignoredUsersList = nullptr;
    QPushButton* mp_stopIgnoringButton = nullptr;
};
