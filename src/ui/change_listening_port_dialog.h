// Edits the port that other clients reach us on. The program listens on the new one from its next start on.
#pragma once

#include <QDialog>

class QLineEdit;

class ChangeListeningPortDialog : public QDialog {
    Q_OBJECT

public:
    // Frees itself when it is closed.
    explicit ChangeListeningPortDialog(QWidget* ip_parent);

    // Stays open, with a word about it, while there is no port in the field, or the present one.
    void accept() override;

private:
    QLineEdit* mp_portEdit = nullptr;
};
