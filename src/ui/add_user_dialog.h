#pragma once

#include <QDialog>

#include <string>

class QLineEdit;
class QPushButton;

// Puts a user into the user list by name, if the server knows the name. Frees itself when it closes.
class AddUserDialog : public QDialog {
    Q_OBJECT

public:
    explicit AddUserDialog(QWidget* ip_parent);

private:
    void BuildLayout();
    void ShowStatus(const QString& i_sentence);
    void Wait(bool i_waits);

    void OnAddUserClicked();
    void OnAddUserResponse(const std::string& i_user, bool i_added);

    std::string m_pendingUser; // whom the server was asked about; empty while no request is under way
    QLineEdit* mp_userNameEdit = nullptr;
    QLineEdit* mp_statusEdit = nullptr;
    QPushButton* mp_addFriendButton = nullptr;
};
