// Edits the name and the password of the next login. Nothing is checked: what the server takes, only the server knows.
#pragma once

#include <QDialog>

class QLineEdit;

class ChangeUsernamePasswordDialog : public QDialog {
    Q_OBJECT

public:
    // Frees itself when it is closed.
    explicit ChangeUsernamePasswordDialog(QWidget* ip_parent);

    void accept() override;

private:
    QLineEdit* mp_usernameEdit = nullptr;
    QLineEdit* mp_passwordEdit = nullptr;
};
