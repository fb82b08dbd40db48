// Edits where the central server is found. The next connection goes there.
#pragma once

#include <QDialog>

class QLineEdit;

class ChangeServerDialog : public QDialog {
    Q_OBJECT

public:
    // Frees itself when it is closed.
    explicit ChangeServerDialog(QWidget* ip_parent);

    // Stays open, with a word about it, while the host is missing or the port is none.
    void accept() override;

private:
    QLineEdit* mp_hostEdit = nullptr;
    QLineEdit* mp_portEdit = nullptr;
};
