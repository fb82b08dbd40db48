// Asks for the name of a room and enters it: a room begins with its first member.
#pragma once

#include <QDialog>

class QLabel;
class QLineEdit;

class CreateRoomDialog : public QDialog {
    Q_OBJECT

public:
    // Frees itself when it is closed.
    explicit CreateRoomDialog(QWidget* ip_parent);

    // Stays open while the server would refuse the name.
    void accept() override;

private:
    void OnNameChanged(const QString& i_name);

    QLineEdit* mp_nameEdit = nullptr;
    QLabel* mp_faultLabel = nullptr;
};
